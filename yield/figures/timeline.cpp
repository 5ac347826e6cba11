// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"

#include <QLocale>

namespace
{
constexpr int mostPeriods = 70;
constexpr int daysInWeek = 7;

QString inWords(const QDate& date, const char* format)
{
    return QLocale(QLocale::English).toString(date, QLatin1String(format));
}

QDate mondayOf(const QDate& day)
{
    return day.addDays(1 - day.dayOfWeek());
}

int monthNumber(const QDate& day)
{
    return 12 * day.year() + day.month();
}
} // namespace

Timeline timelineOf(const QMap<QDate, Tally>& days, const Tally& all)
{
    Timeline timeline;
    if (days.isEmpty())
        return timeline;
    const QDate first = days.firstKey();
    const QDate last = days.lastKey();
    const bool byDay = first.daysTo(last) < mostPeriods;
    const bool byWeek = !byDay && first.daysTo(last) < mostPeriods * daysInWeek;
    timeline.unit = byDay ? "day" : byWeek ? "week" : "month";

    const auto slotOf = [&](const QDate& day) {
        if (byDay)
            return static_cast<int>(first.daysTo(day));
        if (byWeek)
            return static_cast<int>(mondayOf(first).daysTo(mondayOf(day))) / daysInWeek;
        return monthNumber(day) - monthNumber(first);
    };
    for (auto day = days.cbegin(); day != days.cend(); ++day) {
        const int slot = slotOf(day.key());
        if (timeline.periods.isEmpty() || timeline.periods.last().slot != slot) {
            const QDate begin = byDay    ? day.key()
                                : byWeek ? mondayOf(day.key())
                                         : QDate(day.key().year(), day.key().month(), 1);
            const QString name = byDay    ? inWords(begin, "dddd, d MMM yyyy")
                                 : byWeek ? "Week of " + inWords(begin, "d MMM yyyy")
                                          : inWords(begin, "MMMM yyyy");
            timeline.periods.append({slot, name,
                                     inWords(begin, byDay || byWeek ? "d MMM" : "MMM yy"), Tally(),
                                     Limits()});
        }
        timeline.periods.last().tally += day.value();
    }
    for (auto& period : timeline.periods)
        period.limits = limitsOf(period.tally.units, all);
    timeline.length = timeline.periods.last().slot + 1;
    return timeline;
}
