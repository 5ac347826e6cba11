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
    QJsonObject object{{"request", requestObject},
                       {"implausible_dates", report.implausibleDates},
                       {"period", textOrNull(timelineOf(report.days).period)},
                       {"retested_units", report.retestedUnitCount}};
    auto tables = tables::all(report);
    object["totals"] = objectOf(tables.take("totals").first());
    for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
        QJsonArray rows;
        for (const Row& row : *table)
            rows.append(objectOf(row));
        object[table.key()] = rows;
    }
    return QJsonDocument(object).toJson();
}
