// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/commands/progress.h"
#include "yield/intake/logimport.h"
#include "yield/logs/logfiles.h"
#include "yield/store/schema.h"

namespace
{
/// What an import came to so far.
class ImportSummary
{
public:
    void add(const logimport::Batch& batch)
    {
        counts += batch.counts;
        rejected += logimport::printProblems(batch);
        progress.add(batch.stored.size());
    }

    void print() const
    {
        messages::print(QString("%1 logs: %2 new, %3 duplicates, %4 empty, %5 rejected")
                            .arg(counts.added + counts.duplicates + counts.empty + rejected)
                            .arg(counts.added)
                            .arg(counts.duplicates)
                            .arg(counts.empty)
                            .arg(rejected));
        logimport::printWarnings(counts);
    }

    ExitStatus status() const
    {
        return rejected == 0 ? ExitStatus::Success : ExitStatus::ProblemsFound;
    }

private:
    StoreCounts counts;
    int rejected = 0;
    Progress progress{"logs"};
};

ExitStatus importLogs(const QCommandLineParser& parser)
{
    if (parser.isSet("watch")) {
        messages::warn("\"import --watch\" is \"collect\" since version 1.3.0, and goes with the "
                       "next one");
        Collector(command::collectRequest(parser)).run();
    }
    const Station station = command::stationOf(parser);
    const QStringList paths = parser.positionalArguments();
    if (paths.isEmpty())
        command::fail("missing FOLDER or FILE");
    Database database(parser.value("database"), Database::Access::Write);
    schema::migrate(database);
    ImportSummary summary;
    QStringList files;
    for (const QString& path : paths)
        if (logfiles::isGone(path))
            summary.add({{}, {}, {}, {{path, "No such file or directory"}}});
        else
            files += logfiles::filesOf(path);
    try {
        logimport::store(database, station, files,
                         [&summary](const logimport::Batch& batch) { summary.add(batch); });
    } catch (const DatabaseError&) {
        summary.print(); // what was committed stays
        throw;
    }
    summary.print();
    return summary.status();
}
} // namespace

Command importCommand()
{
    QCommandLineOption spool = command::spoolOption(); // of --watch
    spool.setFlags(QCommandLineOption::HiddenFromHelp);
    return {"import",
            "Reads logs, or all in a folder, into the database: logs of earlier times, copies, and "
            "Outbox/Stored after a database was lost. Nothing in the folder is changed. The same "
            "logs again change nothing. Exit status 1 if a file was rejected.",
            importLogs,
            command::stationOptions() +
                QList<QCommandLineOption>{command::hiddenOption("watch"), spool},
            "FOLDER|FILE..."};
}
