// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/logimport.h"

#include <QSysInfo>
#include <QTextStream>

namespace
{
int importLogs(const QCommandLineParser& parser)
{
    ImportRequest request;
    request.database = parser.value("database");
    request.station = {parser.value("station"), parser.isSet("tests-18")};
    request.paths = parser.positionalArguments();
    if (request.paths.isEmpty())
        command::fail("which folder or file?");
    if (request.station.name.isEmpty())
        command::fail("a station needs a name");
    if (parser.isSet("watch"))
        return logimport::watch(request, parser.value("spool"));
    QTextStream out(stdout);
    QTextStream errors(stderr);
    return logimport::run(request, out, errors);
}
} // namespace

Command importCommand()
{
    return {"import",
            "Reads logs, or all in a folder, into the database. Nothing in the folder is changed. "
            "The same logs again change nothing. Exit status 1 if a file is no log.",
            importLogs,
            {{"station", "The station that the logs come from (default: this computer's name).",
              "name", QSysInfo::machineHostName()},
             {"tests-18", "The station tests component 18. The database remembers it."},
             {"watch", "Go on importing as logs appear, until SIGTERM or Ctrl-C."},
             command::spoolOption()},
            "FOLDER|FILE..."};
}
