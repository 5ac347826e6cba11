// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"

#include <QLocale>

#include <algorithm>

namespace
{
constexpr int maxPeriods = 70;
constexpr int daysInWeek = 7;

QString periodFor(qint64 days)
{
    if (days <= maxPeriods)
        return "day";
    return days <= maxPeriods * daysInWeek ? "week" : "month";
}

QDate beginOf(const QString& period, const QDate& day)
{
    if (period == "week")
        return day.addDays(1 - day.dayOfWeek());
    return period == "month" ? day.addDays(1 - day.day()) : day;
}

int slotOf(const QString& period, const QDate& begin, const QDate& firstBegin)
{
    if (period == "month")
        return 12 * (begin.year() - firstBegin.year()) + begin.month() - firstBegin.month();
    const auto days = static_cast<int>(firstBegin.daysTo(begin));
    return period == "week" ? days / daysInWeek : days;
}

QString nameOf(const QString& period, const QDate& begin)
{
    const QString format = period == "day"    ? "dddd, d MMM yyyy"
                           : period == "week" ? "'Week of' d MMM yyyy"
                                              : "MMMM yyyy";
    return QLocale::c().toString(begin, format);
}
} // namespace

Timeline timelineOf(const QMap<QDate, Tally>& days)
{
    Timeline timeline;
    if (days.isEmpty())
        return timeline;
    const QString period = periodFor(days.firstKey().daysTo(days.lastKey()) + 1);
    const QDate firstBegin = beginOf(period, days.firstKey());
    const QString labelFormat = period == "month" ? "MMM yy" : "d MMM";
    timeline.period = period;
    for (auto day = days.cbegin(); day != days.cend(); ++day) {
        const QDate begin = beginOf(period, day.key());
        if (timeline.periods.isEmpty() || timeline.periods.last().begin != begin)
            timeline.periods.append({slotOf(period, begin, firstBegin), nameOf(period, begin),
                                     QLocale::c().toString(begin, labelFormat), Tally(), begin});
        timeline.periods.last().tally += day.value();
    }
    timeline.slotCount = timeline.periods.last().slot + 1;
    return timeline;
}

Timeline stationTimeline(const QMap<QString, StationReport>& stations)
{
    constexpr int lettersOfAxis = 120;
    const int maxLength = std::max(2, lettersOfAxis / std::max(1, stations.size()));
    Timeline timeline{"station", {}, 2 * stations.size() - 1, maxLength};
    for (const StationReport& station : stations) {
        const QString& name = station.name;
        const QString label = name.size() <= maxLength ? name : "…" + name.right(maxLength - 1);
        timeline.periods.append({2 * timeline.periods.size(), name, label, station.tally});
    }
    return timeline;
}
