// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/testlog.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/stationlog.h"

/// Logs as the station itself writes them.
namespace unitlogs
{
/// The marks of a whole run, at a TARVEK station and at another one.
inline const BandMarks passedWith18 = ~BandMarks();
inline BandMarks passed()
{
    return ~attemptrules::channelButtonMarks();
}

inline BandMarks without(BandMarks marks, int componentNum)
{
    for (int band = 0; band < bandmarks::bandCount(componentNum); ++band)
        marks.reset(bandmarks::markIndex(componentNum, band));
    return marks;
}

inline BandMarks without(BandMarks marks, int componentNum, int band)
{
    return marks.reset(bandmarks::markIndex(componentNum, band));
}

/// The marks of a run that was aborted at a control.
inline BandMarks abortedAt(int componentNum)
{
    BandMarks marks = passed();
    for (int c = componentNum; c <= roster::lastComponent; ++c)
        marks = without(marks, c);
    return marks;
}

inline QDateTime noon()
{
    return {QDate(2026, 11, 21), QTime(12, 0)};
}

inline QStringList lines(const QString& serial, const QDateTime& when, const BandMarks& marks)
{
    testlog::Coverage coverage;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            coverage.at(static_cast<std::size_t>(c))
                .append({0, 0, marks[bandmarks::markIndex(c, band)] ? 1.0F : 0.0F});
    return testlog::lines(serial, when, coverage);
}

inline void write(const QString& path, const QString& serial, const BandMarks& marks,
                  const QDateTime& when = noon())
{
    testlog::write(path, lines(serial, when, marks));
}

/// minute: after noon.
inline StationLog log(const QString& serial, int minute, const BandMarks& marks)
{
    return {serial, noon().addSecs(60 * minute).toString(Qt::ISODate), marks};
}
} // namespace unitlogs
