// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"

#include <QLocale>

namespace
{
constexpr int mostPeriods = 70;
constexpr int daysInWeek = 7;

struct Words {
    QString unit;
    QString name; ///< Formats of a period's first day.
    QString shortName;
};
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
    const Words words = byDay    ? Words{"day", "dddd, d MMM yyyy", "d MMM"}
                        : byWeek ? Words{"week", "'Week of' d MMM yyyy", "d MMM"}
                                 : Words{"month", "MMMM yyyy", "MMM yy"};
    timeline.unit = words.unit;
    const auto beginOf = [&](const QDate& day) {
        const int daysBefore = byDay ? 0 : byWeek ? day.dayOfWeek() - 1 : day.day() - 1;
        return day.addDays(-daysBefore);
    };
    const auto slotOf = [&](const QDate& day) {
        if (!byDay && !byWeek)
            return 12 * (day.year() - first.year()) + day.month() - first.month();
        return static_cast<int>(beginOf(first).daysTo(day)) / (byDay ? 1 : daysInWeek);
    };
    const QLocale english(QLocale::English);
    for (auto day = days.cbegin(); day != days.cend(); ++day) {
        const int slot = slotOf(day.key());
        if (timeline.periods.isEmpty() || timeline.periods.last().slot != slot) {
            const QDate begin = beginOf(day.key());
            timeline.periods.append({slot, english.toString(begin, words.name),
                                     english.toString(begin, words.shortName), Tally(), Limits()});
        }
        timeline.periods.last().tally += day.value();
    }
    for (auto& period : timeline.periods)
        period.limits = limitsOf(period.tally.units, all);
    timeline.length = timeline.periods.last().slot + 1;
    return timeline;
}
