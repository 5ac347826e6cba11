// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"

#include <QCoreApplication>
#include <QTextStream>

void command::warn(const QString& text)
{
    QTextStream(stderr) << QCoreApplication::applicationName() << ": " << text << Qt::endl;
}

int command::fail(const QString& text)
{
    warn(text);
    return exitstatus::failed;
}

QString command::database(const QCommandLineParser& parser)
{
    return parser.value("database");
}

QStringList command::arguments(const QCommandLineParser& parser)
{
    return parser.positionalArguments().mid(1);
}

QCommandLineOption command::spoolOption()
{
    return {
        "spool",
        QString("The folder where \"import --watch\" keeps logs for the database (default: %1).")
            .arg(Spool::defaultRoot()),
        "folder"};
}
