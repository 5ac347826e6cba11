// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/collector.h"
#include "yield/logs/logfiles.h"
#include "yield/logs/messages.h"
#include "yield/store/schema.h"

#include <QStandardPaths>
#include <QSysInfo>

namespace
{
QList<QCommandLineOption> intakeOptions()
{
    return {{"station", "The station that the logs come from (default: this computer's name).",
             "name", QSysInfo::machineHostName()},
            {"tests-component-18", "The station tests component 18. The database remembers it."}};
}

Station stationOf(const QCommandLineParser& parser)
{
    Station station{parser.value("station"), parser.isSet("tests-component-18")};
    if (station.name.isEmpty())
        command::fail("a station needs a name");
    return station;
}

ExitStatus collect(const QCommandLineParser& parser)
{
    const QStringList folders = parser.positionalArguments();
    if (folders.size() != 1)
        command::fail("collect takes one LOGS, the folder that a station writes to");
    Collector collector(
        {parser.value("database"), stationOf(parser), folders[0], parser.value("spool")});
    if (!parser.isSet("once"))
        collector.run();
    return collector.pass() ? ExitStatus::Success : ExitStatus::ProblemsFound;
}

ExitStatus importLogs(const QCommandLineParser& parser)
{
    const Station station = stationOf(parser);
    const QStringList paths = parser.positionalArguments();
    if (paths.isEmpty())
        command::fail("missing FOLDER or FILE");
    Database database(parser.value("database"), Database::Access::Write);
    schema::migrate(database);
    int gone = 0;
    QStringList files;
    for (const QString& path : paths) {
        files += logfiles::filesOf(path);
        if (logfiles::isGone(path)) {
            messages::warn(path + ": not imported: No such file or directory");
            ++gone;
        }
    }
    const auto result = logimport::store(database, station, files);
    logimport::printProblems(result);
    const StoreCounts& counts = result.counts;
    const int rejected = gone + static_cast<int>(result.problems.size());
    messages::print(QString("%1 logs: %2 new, %3 duplicates, %4 empty, %5 rejected")
                        .arg(counts.added + counts.duplicates + counts.empty + rejected)
                        .arg(counts.added)
                        .arg(counts.duplicates)
                        .arg(counts.empty)
                        .arg(rejected));
    return rejected == 0 ? ExitStatus::Success : ExitStatus::ProblemsFound;
}
ExitStatus renameStation(const QCommandLineParser& parser)
{
    const QStringList words = parser.positionalArguments();
    if (words.size() != 3 || words[0] != "rename" || words[2].isEmpty())
        command::fail("station takes the words: rename OLD NEW");
    Database database(parser.value("database"), Database::Access::Read);
    attemptstore::renameStation(database, words[1], words[2]);
    const QString oldName = printableText(words[1]);
    messages::print(QString("renamed \"%1\" to \"%2\"; a collector running as \"%1\" recreates it")
                        .arg(oldName, printableText(words[2])));
    return ExitStatus::Success;
}
} // namespace

Command collectCommand()
{
    return {"collect",
            "Stores every run of a station: makes LOGS/Outbox, where the station puts each log, "
            "stores what is in it and moves it to Outbox/Stored. Goes on until it is ended, which "
            "is safe at any moment.",
            collect,
            intakeOptions() +
                QList<QCommandLineOption>{
                    {"once", "Store what is in the outbox now, then end. Exit "
                             "status 1 if a log stays there or was rejected."},
                    {"spool", "The spool of version 1.2.0 (default: in the user's data folder).",
                     "folder",
                     QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/spool"}},
            "LOGS"};
}

Command importCommand()
{
    return {"import",
            "Reads logs, or all in a folder, into the database: logs of earlier times, copies, and "
            "Outbox/Stored after a database was lost. Nothing in the folder is changed. The same "
            "logs again change nothing. Exit status 1 if a file was rejected.",
            importLogs, intakeOptions(), "FOLDER|FILE..."};
}

Command stationCommand()
{
    return {
        "station",
        "Corrects the name of a station: OLD becomes NEW. If there is a station NEW already, it "
        "gets the attempts of both, each log once.",
        renameStation,
        {},
        "rename OLD NEW"};
}
