// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/timeline.h"

#include <QLocale>

namespace
{
constexpr int daysInWeek = 7;

struct PeriodKind {
    QString period;
    QString nameFormat;
    QString labelFormat;
};

PeriodKind kindFor(qint64 days)
{
    constexpr int maxPeriods = 70;
    if (days <= maxPeriods)
        return {"day", "dddd, d MMM yyyy", "d MMM"};
    if (days <= maxPeriods * daysInWeek)
        return {"week", "'Week of' d MMM yyyy", "d MMM"};
    return {"month", "MMMM yyyy", "MMM yy"};
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
} // namespace

Timeline timelineOf(const QMap<QDate, Tally>& days)
{
    if (days.isEmpty())
        return {};
    const auto kind = kindFor(days.firstKey().daysTo(days.lastKey()) + 1);
    const QDate firstBegin = beginOf(kind.period, days.firstKey());
    const QLocale english = QLocale::c();
    Timeline timeline{kind.period, {}};
    for (auto day = days.cbegin(); day != days.cend(); ++day) {
        const QDate begin = beginOf(kind.period, day.key());
        if (timeline.periods.isEmpty() || timeline.periods.last().begin != begin)
            timeline.periods.append({slotOf(kind.period, begin, firstBegin),
                                     english.toString(begin, kind.nameFormat),
                                     english.toString(begin, kind.labelFormat), Tally(), begin});
        timeline.periods.last().tally += day.value();
    }
    return timeline;
}
