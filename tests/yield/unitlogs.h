// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/testlog.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/stationlog.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

/// Logs as the station itself writes them, and what a database made of them.
namespace unitlogs
{
/// Every mark but those of the given bands.
inline BandMarks allBut(const std::vector<bandmarks::Band>& missed)
{
    BandMarks marks = ~BandMarks();
    for (const auto& band : missed)
        marks.reset(bandmarks::markIndex(band.componentNum, band.band));
    return marks;
}

/// A whole run at a station without component 18.
inline BandMarks whole()
{
    return allBut({{18, 0}, {18, 1}});
}

/// The marks of a run that got as far as that component, which it did not work.
inline BandMarks upTo(int componentNum)
{
    BandMarks marks = whole();
    for (auto mark = bandmarks::markIndex(componentNum, 0); mark < marks.size(); ++mark)
        marks.reset(mark);
    return marks;
}

/// "whole", "all" (with component 18), "18" (alone), "none", or "to20" (as far as 20); without what
/// follows: "whole-3.5-40" lacks band 5 of component 3, and component 40.
inline BandMarks marks(const QString& words)
{
    const QStringList parts = words.split('-');
    BandMarks marks = parts[0] == "18"           ? ~whole()
                      : parts[0] == "none"       ? BandMarks()
                      : parts[0] == "all"        ? ~BandMarks()
                      : parts[0].startsWith("t") ? upTo(parts[0].mid(2).toInt())
                                                 : whole();
    for (const QString& part : parts.mid(1)) {
        const QStringList numbers = part.split('.');
        for (int band = 0; band < bandmarks::bandCount(numbers[0].toInt()); ++band)
            if (numbers.size() == 1 || numbers[1].toInt() == band)
                marks.reset(bandmarks::markIndex(numbers[0].toInt(), band));
    }
    return marks;
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

inline QDateTime noon()
{
    return {QDate(2026, 11, 21), QTime(12, 0)};
}

inline QString path(const QString& folder, const QString& serial)
{
    return folder + QString("/ZORVI_%1.txt").arg(serial);
}

inline void write(const QString& folder, const QString& serial, const BandMarks& marks,
                  const QDateTime& when = noon())
{
    QFile file(path(folder, serial));
    if (file.open(QIODevice::WriteOnly))
        file.write(lines(serial, when, marks).join('\n').toUtf8() + '\n');
}

inline StationLog log(const QString& serial, int minutesAfterNoon, const BandMarks& marks)
{
    return {serial, noon().addSecs(60 * minutesAfterNoon).toString(Qt::ISODate), marks};
}

/// All that the database has of a station, without the numbers of the rows; sorted.
inline QStringList rows(const QSqlDatabase& database, const QString& station)
{
    QStringList found;
    for (const QString select :
         {"'attempt', serial, tested_at, complete, coalesce(CAST(ended_at AS TEXT), ''), marks "
          "FROM attempts",
          "'missed', serial, tested_at, component, band, '' "
          "FROM missed_bands JOIN attempts ON attempts.id = attempt_id",
          "'save', serial, tested_at, 0, 0, marks FROM repeated_saves"}) {
        QSqlQuery query("SELECT " + select + " JOIN stations ON stations.id = station_id " +
                            "WHERE name = '" + station + "'",
                        database);
        while (query.next()) {
            QString row;
            for (int i = 0; i < 5; ++i)
                row += query.value(i).toString() + ' ';
            found << row + query.value(5).toByteArray().toHex();
        }
    }
    found.sort();
    return found;
}
} // namespace unitlogs
