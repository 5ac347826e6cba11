// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/commands/exitstatus.h"
#include "yield/figures/report.h"
#include "yield/intake/collector.h"
#include "yield/store/database.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileDevice>
#include <QList>
#include <QString>

#include <functional>

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
ExitStatus run(const QStringList& words);

/// Ends the command, with a line that says why.
[[noreturn]] void fail(const QString& text);

/// An option that is not in the help: a former name, kept for one version. valueName: empty for an
/// option without a value.
QCommandLineOption hiddenOption(const QString& name, const QString& valueName = {});

/// The options of a command that stores logs.
QList<QCommandLineOption> stationOptions();

/// What stationOptions() say. Throws std::runtime_error without a name.
Station stationOf(const QCommandLineParser& parser);

/// The spool of version 1.2.0.
QCommandLineOption spoolOption();

/// What is to be collected, by these options and the one argument. Throws std::runtime_error.
CollectRequest collectRequest(const QCommandLineParser& parser);

/// Writes a file: it is replaced as a whole at the end, or left as it was. A pipe or a device is
/// written through instead, and "-" is standard output. write returns false if not all arrived.
void writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write);
} // namespace command
