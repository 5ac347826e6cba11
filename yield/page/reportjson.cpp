// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/reportjson.h"

#include "yield/figures/timeline.h"
#include "yield/page/tables.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
QJsonArray rowsOf(const Table& table)
{
    QJsonArray rows;
    for (const Row& row : table.rows) {
        QJsonObject object;
        for (int column = 0; column < row.size(); ++column)
            object[table.columns.at(column).key] = row.at(column).value;
        rows.append(object);
    }
    return rows;
}

/// Null instead of an empty text.
QJsonValue textOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonObject requestObject(const Report& report)
{
    const ReportRequest& request = report.request;
    return {{"made_at", request.now.toString("yyyy-MM-ddTHH:mm:ss")},
            {"since", textOrNull(request.since.toString(Qt::ISODate))},
            {"until", textOrNull(request.until.toString(Qt::ISODate))},
            {"station", textOrNull(request.station)},
            {"exclude", QJsonArray::fromStringList(request.exclude)},
            {"excluded_units", report.excluded}};
}
} // namespace

QByteArray reportJson(const Report& report)
{
    const QJsonObject object{{"request", requestObject(report)},
                             {"last_logs", rowsOf(tables::lastLogs(report))},
                             {"recent_days", rowsOf(tables::recentDays(report))},
                             {"not_passed", rowsOf(tables::notPassed(report))},
                             {"totals", rowsOf(tables::totals(report)).first()},
                             {"implausible_dates", report.implausibleDates.units},
                             {"period", textOrNull(timelineOf(report.days).period)},
                             {"trend", rowsOf(tables::trend(report))},
                             {"stations", rowsOf(tables::stations(report))},
                             {"controls", rowsOf(tables::controls(report))},
                             {"pareto", rowsOf(tables::pareto(report))},
                             {"missed_bands", rowsOf(tables::bands(report))},
                             {"aborted", rowsOf(tables::aborted(report))},
                             {"attempts_by_number", rowsOf(tables::attemptsByNumber(report))},
                             {"retested", rowsOf(tables::retested(report))},
                             {"retested_units", report.retestedUnitCount}};
    return QJsonDocument(object).toJson();
}
