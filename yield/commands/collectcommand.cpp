// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

namespace
{
ExitStatus collect(const QCommandLineParser& parser)
{
    Collector collector(command::collectRequest(parser));
    if (!parser.isSet("once"))
        collector.run();
    switch (collector.pass()) {
    case Collector::Result::Done:
        return ExitStatus::Success;
    case Collector::Result::ProblemsFound:
        return ExitStatus::ProblemsFound;
    case Collector::Result::NoOutbox:
        break;
    }
    return ExitStatus::Error;
}
} // namespace

Command collectCommand()
{
    return {"collect",
            "Stores every run of a station: makes LOGS/Outbox, where the station puts each log, "
            "stores what is in it and moves it to Outbox/Stored. Goes on until it is ended, which "
            "is safe at any moment.",
            collect,
            command::stationOptions() +
                QList<QCommandLineOption>{
                    {"once", "Store what is in the outbox now, then end. Exit status 1 if a log "
                             "stays in the outbox or was rejected."},
                    command::spoolOption()},
            "LOGS"};
}
