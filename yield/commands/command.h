// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
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
};

Command exportCommand();
Command importCommand();
Command reportCommand();
Command stationCommand();
Command statusCommand();
Command unitCommand();

/// Counts all attempts of a database. Throws std::runtime_error, also for an unknown station.
Report readReport(Database& database, ReportRequest request);

namespace command
{
/// Runs the command that the words name, after the program's name; needs a QCoreApplication. The
/// status for the shell: 0; 1 if a log was refused or a unit is not complete; 2 if the command line
/// makes no sense, the database failed or a file could not be written.
int run(const QStringList& words);

/// Ends the command: it cannot do what it is for, because of this.
[[noreturn]] void fail(const QString& text);

QCommandLineOption spoolOption();

/// Writes a file: it is replaced as a whole at the end, or left as it was. A pipe or a device is
/// written through instead, and "-" is standard output. write gives false if not all arrived.
void writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write);
} // namespace command
