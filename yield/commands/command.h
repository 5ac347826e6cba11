// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"
#include "yield/store/database.h"

#include <QByteArray>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>

/// The exit status of zorvi_yield, as grep and diff have it.
enum class ExitStatus {
    Success = 0,
    ProblemsFound = 1, ///< What a command looked for: rejected files, a unit that did not pass …
    Error = 2          ///< The command line makes no sense, the database or the output fails.
};

/// A command of the program, with its help.
struct Command {
    QString name;
    QString description;
    /// May throw std::runtime_error: its text is printed, and the status is Error.
    ExitStatus (*run)(const QCommandLineParser& parser) = nullptr;
    QList<QCommandLineOption> options = {}; ///< Beside --database and --help, which all have.
    QString argument = {};                  ///< Empty for a command that takes none.
};

Command collectCommand();
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
/// one place that makes text and an exit status of exceptions.
ExitStatus run(QStringList words);

/// Ends the command, with a line that says why.
[[noreturn]] void fail(const QString& text);

/// Writes a file: it is replaced as a whole, or left as it was. A pipe or a device is written
/// through instead, and "-" is standard output.
void writeFile(const QString& path, const QByteArray& bytes);
} // namespace command
