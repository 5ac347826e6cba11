// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>

/// The times of logs and of starts of runs: texts such as 2026-11-21T14:03:12 or, with
/// milliseconds, 2026-11-21T14:03:12.345.
namespace logtime
{
/// The number in those digits of a time; 0 where the time is shorter. Read digit by digit:
/// QDateTime would take a large part of the time of a report.
inline int number(const QString& time, int begin, int digits)
{
    int value = 0;
    for (int i = begin; i < begin + digits && i < time.size(); ++i)
        value = 10 * value + time[i].unicode() - '0';
    return value;
}

inline QDate dayOf(const QString& time)
{
    return {number(time, 0, 4), number(time, 5, 2), number(time, 8, 2)};
}

/// Milliseconds on the station's wall clock, for differences: the same on a computer in any time
/// zone.
inline qint64 msOf(const QString& time)
{
    const qint64 hours = dayOf(time).toJulianDay() * 24 + number(time, 11, 2);
    const qint64 seconds = (hours * 60 + number(time, 14, 2)) * 60 + number(time, 17, 2);
    return seconds * 1000 + number(time, 20, 3);
}
} // namespace logtime
