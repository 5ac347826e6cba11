// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"

#include <QLocale>

namespace
{
constexpr int mostPeriods = 70;
constexpr int daysInWeek = 7;
} // namespace

Timeline timelineOf(const QMap<QDate, Tally>& days)
{
    Timeline timeline;
    if (days.isEmpty())
        return timeline;
    const QDate first = days.firstKey();
    const QDate last = days.lastKey();
    const bool byDay = first.daysTo(last) < mostPeriods;
    const bool byWeek = !byDay && first.daysTo(last) < mostPeriods * daysInWeek;
    timeline.unit = byDay ? "day" : byWeek ? "week" : "month";
    const QString name = byDay ? "dddd, d MMM yyyy" : byWeek ? "'Week of' d MMM yyyy" : "MMMM yyyy";
    const QString shortName = byDay || byWeek ? "d MMM" : "MMM yy";
    const auto beginOf = [&](const QDate& day) {
        const int daysBefore = byDay ? 0 : byWeek ? day.dayOfWeek() - 1 : day.day() - 1;
        return day.addDays(-daysBefore);
    };
    const auto slotOf = [&](const QDate& day) {
        if (!byDay && !byWeek)
            return 12 * (day.year() - first.year()) + day.month() - first.month();
        return static_cast<int>(beginOf(first).daysTo(day)) / (byDay ? 1 : daysInWeek);
    };
    for (auto day = days.cbegin(); day != days.cend(); ++day) {
        const int slot = slotOf(day.key());
        if (timeline.periods.isEmpty() || timeline.periods.last().slot != slot) {
            const QDate begin = beginOf(day.key());
            timeline.periods.append({slot, QLocale::c().toString(begin, name),
                                     QLocale::c().toString(begin, shortName), Tally()});
        }
        timeline.periods.last().tally += day.value();
    }
    timeline.length = timeline.periods.last().slot + 1;
    return timeline;
}
