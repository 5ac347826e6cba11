// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/commands/outputfile.h"
#include "yield/commands/reportfile.h"
#include "yield/figures/reportcounter.h"

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

/// The first of the last days. False, with the reason in error, if it cannot be told.
bool readDays(const QCommandLineParser& parser, ReportRequest& request, QString& error)
{
    if (!parser.isSet("days"))
        return true;
    constexpr int mostDays = 36500;
    const QString text = parser.value("days");
    const int days = text.toInt();
    if (days < 1 || days > mostDays)
        error = QString("--days takes a number from 1 to %1, not \"%2\"").arg(mostDays).arg(text);
    else if (request.since.isValid())
        error = "--days and --since both say which day is the first";
    else
        request.since =
            (request.until.isValid() ? request.until : request.now.date()).addDays(1 - days);
    return error.isEmpty();
}

bool readPatterns(const QCommandLineParser& parser, QStringList& without, QString& error)
{
    without = parser.values("without");
    for (const QString& pattern : without)
        if (!serialPattern(pattern).isValid())
            error = QString("--without takes a pattern such as \"KG-*\", not \"%1\"").arg(pattern);
    return error.isEmpty();
}

int report(const QCommandLineParser& parser)
{
    ReportRequest request;
    request.now = QDateTime::currentDateTime();
    QString problem;
    if (!readDate(parser, "since", request.since, problem) ||
        !readDate(parser, "until", request.until, problem) || !readDays(parser, request, problem) ||
        !readPatterns(parser, request.without, problem))
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
        {"days", "The last days, today or the one of --until included, instead of --since.",
         "number"},
        {"station", "One station only.", "name"},
        {"without",
         "Leave out the serials that the pattern matches, such as a known-good unit's; may be "
         "given "
         "several times. * stands for any characters, ? for one, [abc] for one of these.",
         "pattern"},
        {"output", "The page, \"-\" for standard output (default: zorvi_yield.html).", "file",
         "zorvi_yield.html"},
    };
    return command;
}
