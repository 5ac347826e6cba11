// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/database.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>

/// A command of the program, with what its help says of it. Each stands in a file of its own.
struct Command {
    QString name;
    QString description;
    /// Gives the status for the shell. May throw DatabaseError.
    int (*run)(const QCommandLineParser& parser) = nullptr;
    QList<QCommandLineOption> options; ///< Beside --database and --help, which all have.
    QString argument;                  ///< Empty for a command that takes none.
    QString argumentHelp;
    int mostArguments = 0;
};

// In alphabetical order.
Command checkCommand();
Command exportCommand();
Command importCommand();
Command reportCommand();
Command stationCommand();
Command statusCommand();
Command unitCommand();

/// What the commands share.
namespace command
{
/// Says why a command cannot do what it is for; gives the status for that.
int fail(const QString& text);

/// Says something that a person should know, on standard error.
void warn(const QString& text);

/// The value of --database.
QString database(const QCommandLineParser& parser);

/// The arguments after the command's name.
QStringList arguments(const QCommandLineParser& parser);

/// The folder of the watch.
QCommandLineOption spoolOption();
} // namespace command
