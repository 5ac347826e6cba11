// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include "yield/intake/spool.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>
#include <stdexcept>

namespace
{
/// What is to be replaced as a whole: a file, or nothing yet. Devices have links to files that are
/// open, which no other file can replace.
bool isFile(const QString& path)
{
    const QFileInfo info(path);
    const QString absolute = info.absoluteFilePath();
    return path != "-" && !absolute.startsWith("/dev/") && !absolute.startsWith("/proc/") &&
           (!info.exists() || info.isFile());
}
} // namespace

void command::fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
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
            .arg(SpoolFolder::defaultRoot()),
        "folder"};
}

void command::writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write)
{
    QSaveFile replacing(path);
    QFile through(path);
    const bool isReplaced = isFile(path);
    QFileDevice& file = isReplaced ? static_cast<QFileDevice&>(replacing) : through;
    const bool isOpen =
        path == "-" ? through.open(stdout, QIODevice::WriteOnly) : file.open(QIODevice::WriteOnly);
    const bool isWritten = isOpen && write(file) && file.flush() &&
                           file.error() == QFileDevice::NoError &&
                           (!isReplaced || replacing.commit());
    if (!isWritten)
        fail(QString("%1: %2").arg(path == "-" ? "standard output" : path, file.errorString()));
}
