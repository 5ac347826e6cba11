// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/testlog.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/stationlog.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

/// Logs as the station itself writes them, and what a database made of them.
namespace unitlogs
{
/// "whole" (without component 18), "all", "18" (alone), or "to20" (as far as 20); without what
/// follows: "whole-3.5-40" lacks band 5 of component 3, and component 40.
inline BandMarks marks(const QString& words)
{
    const QStringList missed = words.split('-').mid(1);
    const QString run = words.section('-', 0, 0);
    const int end = run.startsWith("to") ? run.mid(2).toInt() : roster::componentCount;
    BandMarks marks;
    for (int c = 0; c < end; ++c)
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            marks[bandmarks::markIndex(c, band)] =
                (run == "all" || (run == "18") == (c == 18)) &&
                !missed.contains(QString::number(c)) &&
                !missed.contains(QString("%1.%2").arg(c).arg(band));
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

inline void write(const QString& path, const QString& serial, const QString& words,
                  const QDateTime& when = noon())
{
    testlog::write(path, lines(serial, when, marks(words)));
}

inline StationLog log(const QString& serial, int secondsAfterNoon, const QString& words)
{
    return {serial, noon().addSecs(secondsAfterNoon).toString(Qt::ISODate), marks(words)};
}

/// All that the database has of a station, without the numbers of the rows; sorted.
inline QStringList rows(const QSqlDatabase& database, const QString& station)
{
    QStringList found;
    for (const QString select :
         {"'attempt', serial, tested_at, passed, coalesce(CAST(aborted_component AS TEXT), ''), marks "
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
