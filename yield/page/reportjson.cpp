// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"
#include "yield/page/page.h"
#include "yield/page/tables.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
QJsonObject objectOf(const Row& row)
{
    QJsonObject object;
    for (const auto& [key, cell] : row)
        object[key] = cell.value;
    return object;
}

QJsonArray arrayOf(const Rows& rows)
{
    QJsonArray array;
    for (const Row& row : rows)
        array.append(objectOf(row));
    return array;
}

/// Null instead of an empty text.
QJsonValue textOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

} // namespace

QByteArray reportJson(const Report& report)
{
    const ReportRequest& request = report.request;
    const QJsonObject requestObject{{"made_at", request.now.toString("yyyy-MM-ddTHH:mm:ss")},
                                    {"since", textOrNull(request.since.toString(Qt::ISODate))},
                                    {"until", textOrNull(request.until.toString(Qt::ISODate))},
                                    {"station", textOrNull(request.station)},
                                    {"exclude", QJsonArray::fromStringList(request.exclude)},
                                    {"excluded_units", report.excluded}};
    const QJsonObject object{{"request", requestObject},
                             {"last_logs", arrayOf(tables::lastLogs(report))},
                             {"recent_days", arrayOf(tables::recentDays(report))},
                             {"not_passed", arrayOf(tables::notPassed(report))},
                             {"totals", objectOf(tables::totals(report))},
                             {"implausible_dates", report.implausibleDates},
                             {"period", textOrNull(timelineOf(report.days).period)},
                             {"trend", arrayOf(tables::trend(report))},
                             {"stations", arrayOf(tables::stations(report))},
                             {"controls", arrayOf(tables::controls(report))},
                             {"pareto", arrayOf(tables::pareto(report))},
                             {"missed_bands", arrayOf(tables::bands(report))},
                             {"aborted", arrayOf(tables::aborted(report))},
                             {"attempts_by_number", arrayOf(tables::attemptsByNumber(report))},
                             {"retested", arrayOf(tables::retested(report))},
                             {"retested_units", report.retestedUnitCount}};
    return QJsonDocument(object).toJson();
}
