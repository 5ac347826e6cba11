// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/database.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileDevice>
#include <QList>
#include <QString>

#include <functional>

/// A command of the program, with what its help says of it.
struct Command {
    QString name;
    QString description;
    /// Gives the status for the shell. May throw DatabaseError, or call command::fail().
    int (*run)(const QCommandLineParser& parser) = nullptr;
    QList<QCommandLineOption> options = {}; ///< Beside --database and --help, which all have.
    QString argument = {};                  ///< Empty for a command that takes none.
    QString argumentHelp = {};
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
/// Ends the command: it cannot do what it is for, because of this.
[[noreturn]] void fail(const QString& text);

/// The value of --database.
QString database(const QCommandLineParser& parser);

/// The arguments after the command's name.
QStringList arguments(const QCommandLineParser& parser);

/// The folder of the watch.
QCommandLineOption spoolOption();

/// Writes a file: it is replaced as a whole at the end, or left as it was. A pipe or a device is
/// written through instead, and "-" is standard output. write gives false if not all of it arrived.
/// Fails if the file cannot be written.
void writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write);
} // namespace command
