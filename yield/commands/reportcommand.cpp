// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/figures/reportcounter.h"
#include "yield/logs/messages.h"
#include "yield/page/page.h"
#include "yield/store/attemptreader.h"

namespace
{
/// Invalid without the option.
QDate readDate(const QCommandLineParser& parser, const QString& option)
{
    const QDate date = QDate::fromString(parser.value(option), "yyyy-MM-dd");
    if (parser.isSet(option) && !date.isValid())
        command::fail(QString("--%1 takes a date such as 2026-11-21, not \"%2\"")
                          .arg(option, parser.value(option)));
    return date;
}

ReportRequest readRequest(const QCommandLineParser& parser)
{
    ReportRequest request;
    request.now = QDateTime::currentDateTime();
    request.since = readDate(parser, "since");
    request.until = readDate(parser, "until");
    if (parser.isSet("days")) {
        const int days = parser.value("days").toUShort();
        if (days == 0)
            command::fail("--days takes a number of days, 1 or more");
        if (request.since.isValid())
            command::fail("--days and --since cannot be used together");
        const QDate last = request.until.isValid() ? request.until : request.now.date();
        request.since = last.addDays(1 - days);
    }
    if (request.since.isValid() && request.until.isValid() && request.until < request.since)
        command::fail("--until lies before --since");
    request.station = parser.value("station");
    request.exclude = parser.values("exclude");
    for (const QString& pattern : qAsConst(request.exclude))
        if (!serialPattern(pattern).isValid())
            command::fail(
                QString("--exclude takes a pattern such as \"KG-*\", not \"%1\"").arg(pattern));
    return request;
}

ExitStatus report(const QCommandLineParser& parser)
{
    const ReportRequest request = readRequest(parser);
    const QString format = parser.value("format");
    if (format != "html" && format != "json")
        command::fail(QString("--format takes html or json, not \"%1\"").arg(format));
    const bool isJson = format == "json";
    const QString defaultPath = isJson ? "-" : "zorvi_yield.html";
    const QString path = parser.isSet("output") ? parser.value("output") : defaultPath;
    Database database(parser.value("database"), Database::Access::Read);
    const Report figures = readReport(database, request);
    command::writeFile(path, isJson ? reportJson(figures) : reportPage(figures));
    if (path != "-")
        messages::print("written: " + path);
    return ExitStatus::Success;
}
} // namespace

Report readReport(Database& database, ReportRequest request)
{
    request.lastLogs = attemptreader::lastLogs(database, request.now);
    QStringList names;
    for (const LastLog& lastLog : request.lastLogs)
        names << lastLog.station;
    if (!request.station.isEmpty() && !names.isEmpty() && !names.contains(request.station))
        command::fail(QString("no station is named \"%1\"; there are: %2")
                          .arg(request.station, names.join(", ")));
    ReportCounter counter(request);
    attemptreader::forEachUnit(database, [&](const auto& unit) { counter.add(unit); });
    return counter.finish();
}

Command reportCommand()
{
    return {"report",
            "Writes an HTML page or a JSON object with the yield of many units.",
            report,
            {{"since", "The first day, such as 2026-11-21.", "date"},
             {"until", "The last day.", "date"},
             {"days", "Instead of --since: that many days up to today or --until.", "number"},
             {"station", "One station only.", "name"},
             {"exclude",
              "Exclude these serials; may be given again. * stands for any characters, ? for one.",
              "pattern"},
             {"format", "html or json (default: html).", "html|json", "html"},
             {"output",
              "The file, \"-\" for standard output (default: zorvi_yield.html; for JSON standard "
              "output).",
              "file"}}};
}
