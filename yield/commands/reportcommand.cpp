// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/commands/outputfile.h"
#include "yield/commands/reportfile.h"

#include <QDate>
#include <QTextStream>

namespace
{
/// The date stays invalid without the option. False, with the reason in error, if the value is no
/// date.
bool readDate(const QCommandLineParser& parser, const QString& option, QDate& date, QString& error)
{
    if (!parser.isSet(option))
        return true;
    date = QDate::fromString(parser.value(option), "yyyy-MM-dd");
    if (!date.isValid())
        error = QString("--%1 takes a date such as 2026-11-21, not \"%2\"")
                    .arg(option, parser.value(option));
    return date.isValid();
}

int report(const QCommandLineParser& parser)
{
    ReportRequest request;
    QString problem;
    if (!readDate(parser, "since", request.since, problem) ||
        !readDate(parser, "until", request.until, problem))
        return command::fail(problem);
    if (request.since.isValid() && request.until.isValid() && request.until < request.since)
        return command::fail("--until lies before --since");
    request.station = parser.value("station");

    Database database(command::database(parser), Database::Access::Read);
    OutputFile file(parser.value("output"));
    if (!file.isOpen())
        return command::fail(file.problem());
    if (!writeReport(database, request, file.device()) || !file.finish())
        return command::fail(file.problem());
    if (parser.value("output") != "-")
        QTextStream(stdout) << "written: " << parser.value("output") << Qt::endl;
    return 0;
}
} // namespace

Command reportCommand()
{
    Command command;
    command.name = "report";
    command.description = "Writes an HTML page about the yield of many units.";
    command.run = report;
    command.options = {
        {"since", "The first day, such as 2026-11-21.", "date"},
        {"until", "The last day.", "date"},
        {"station", "One station only.", "name"},
        {"output", "The page, \"-\" for standard output (default: zorvi_yield.html).", "file",
         "zorvi_yield.html"},
    };
    return command;
}
