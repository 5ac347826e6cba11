// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/report.h"

#include "yield/bandmarks.h"
#include "yield/database.h"
#include "yield/page.h"

#include <QHash>
#include <QIODevice>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <utility>

// The queries name the attempts that they are about: f is the first attempt at a unit, l the last.

namespace
{
/// Whether a unit has attempts before (<) or after (>) that attempt. Of two in the same second the
/// one that was imported first is the earlier one.
QString hasOther(const QString& attempt, QChar order)
{
    return QStringLiteral("EXISTS (SELECT 1 FROM attempts AS o WHERE o.serial = %1.serial AND "
                          "(o.tested_at, o.id) %2 (%1.tested_at, %1.id))")
        .arg(attempt, order);
}

const QString isFirst = QStringLiteral("NOT ") + hasOther(QStringLiteral("f"), '<');
const QString isLast = QStringLiteral("NOT ") + hasOther(QStringLiteral("l"), '>');
const QString firstDay = QStringLiteral("substr(f.tested_at, 1, 10)");
const QString testedAgain =
    QStringLiteral("SELECT serial, count(*) AS attempts FROM attempts GROUP BY serial "
                   "HAVING count(*) > 1");

/// All units of the cohort whose last attempt is not complete.
QString openUnitsOf(const QString& cohort)
{
    return QStringLiteral("FROM attempts AS l JOIN attempts AS f ON f.serial = l.serial WHERE "
                          "l.complete = 0 AND %1 AND %2 AND %3")
        .arg(isLast, isFirst, cohort);
}

class Reader
{
public:
    Reader(QSqlDatabase& sqlDatabase, Report& reportToFill)
        : database(sqlDatabase)
        , report(reportToFill)
    {
    }

    bool read()
    {
        return readStations() && findCohort() && countFirstAttempts() && countOpenUnits() &&
               readRepeatedUnits() && countMisses() && readOpenUnits() && finish();
    }

    QString problem;

private:
    struct Station {
        StationReport report;
        bool tests18 = false;
    };

    bool run(QSqlQuery& query, const QString& statement)
    {
        // PostgreSQL then hands over row by row, instead of the whole result at once.
        query.setForwardOnly(true);
        if (query.exec(statement))
            return true;
        problem = QStringLiteral("the report cannot be read: %1")
                      .arg(Database::inWords(query.lastError()));
        return false;
    }

    bool readStations()
    {
        QSqlQuery query(database);
        if (!run(query, QStringLiteral("SELECT id, name, tests_18 FROM stations")))
            return false;
        while (query.next()) {
            Station station;
            station.report.name = query.value(1).toString();
            station.tests18 = query.value(2).toInt() != 0;
            stations.insert(query.value(0).toInt(), station);
        }
        if (!run(query, QStringLiteral("SELECT 1 FROM attempts LIMIT 1")))
            return false;
        report.databaseIsEmpty = !query.next();
        return true;
    }

    /// The condition on f for the units that the report is about.
    bool findCohort()
    {
        const ReportRequest& request = report.request;
        QStringList conditions{QStringLiteral("1 = 1")};
        if (request.since.isValid())
            conditions << QStringLiteral("%1 >= '%2'").arg(firstDay, isoDay(request.since));
        if (request.until.isValid())
            conditions << QStringLiteral("%1 <= '%2'").arg(firstDay, isoDay(request.until));
        if (!request.station.isEmpty() && !report.databaseIsEmpty) {
            const int id = idOf(request.station);
            if (id < 0)
                return false;
            conditions << QStringLiteral("f.station_id = %1").arg(id);
        }
        cohort = conditions.join(QStringLiteral(" AND "));
        return true;
    }

    static QString isoDay(const QDate& day) { return day.toString(Qt::ISODate); }

    int idOf(const QString& name)
    {
        QStringList names;
        for (auto it = stations.cbegin(); it != stations.cend(); ++it) {
            if (it->report.name == name)
                return it.key();
            names << it->report.name;
        }
        names.sort();
        problem = QStringLiteral("no station is named \"%1\"; there are: %2")
                      .arg(name, names.join(QStringLiteral(", ")));
        return -1;
    }

    void add(int stationId, const QString& day, const Tally& tally)
    {
        stations[stationId].report.tally += tally;
        report.days[QDate::fromString(day, Qt::ISODate)] += tally;
        report.total += tally;
    }

    /// Most units are tested once. To count all attempts and take those off that are not the first
    /// is several times as fast as to ask each attempt whether it is the first.
    bool countFirstAttempts()
    {
        const QString count =
            QStringLiteral("SELECT f.station_id, %1, count(*), sum(f.complete) FROM attempts AS f "
                           "WHERE %2 GROUP BY %1, f.station_id");
        const QString isRepeat = QStringLiteral("f.serial IN (SELECT serial FROM (%1) AS again) "
                                                "AND %2 AND %3")
                                     .arg(testedAgain, hasOther(QStringLiteral("f"), '<'), cohort);
        for (const auto& [condition, sign] : {std::pair(cohort, 1), std::pair(isRepeat, -1)}) {
            QSqlQuery query(database);
            if (!run(query, count.arg(firstDay, condition)))
                return false;
            while (query.next()) {
                const int units = sign * query.value(2).toInt();
                const int passed = sign * query.value(3).toInt();
                add(query.value(0).toInt(), query.value(1).toString(),
                    {units, units, passed, units});
            }
        }
        return true;
    }

    bool countOpenUnits()
    {
        QSqlQuery query(database);
        if (!run(query, QStringLiteral("SELECT f.station_id, %1, count(*) %2 GROUP BY %1, "
                                       "f.station_id")
                            .arg(firstDay, openUnitsOf(cohort))))
            return false;
        while (query.next())
            add(query.value(0).toInt(), query.value(1).toString(),
                {0, 0, 0, -query.value(2).toInt()});
        return true;
    }

    bool readRepeatedUnits()
    {
        QSqlQuery query(database);
        if (!run(query, QStringLiteral(
                            "SELECT again.serial, again.attempts, f.tested_at, f.station_id, "
                            "f.complete, l.tested_at, l.station_id, l.complete FROM (%1) AS again "
                            "JOIN attempts AS f ON f.serial = again.serial JOIN attempts AS l ON "
                            "l.serial = again.serial WHERE %2 AND %3 AND %4 ORDER BY "
                            "again.attempts DESC, l.tested_at DESC, l.id DESC")
                            .arg(testedAgain, isFirst, isLast, cohort)))
            return false;
        while (query.next()) {
            const int attempts = query.value(1).toInt();
            const QString firstTestedAt = query.value(2).toString();
            const int firstStation = query.value(3).toInt();
            add(firstStation, firstTestedAt.left(10), {0, attempts - 1, 0, 0});
            if (++report.repeatedUnitCount <= Report::maxRepeatedUnits)
                report.repeatedUnits.append({query.value(0).toString(), attempts, firstTestedAt,
                                             stations[firstStation].report.name,
                                             query.value(4).toInt() != 0, query.value(5).toString(),
                                             stations[query.value(6).toInt()].report.name,
                                             query.value(7).toInt() != 0});
        }
        return true;
    }

    /// One row for each set of bands that some unit missed of a control; the set is a sum of powers
    /// of two.
    bool countMisses()
    {
        for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
            controlOf(c).missedBands.resize(bandmarks::bandCount(c));
            for (const Station& station : std::as_const(stations))
                if (c != roster::powerButton && (c != roster::channelButton || station.tests18))
                    controlOf(c).units += station.report.tally.units;
        }

        QSqlQuery query(database);
        if (!run(query,
                 QStringLiteral("SELECT station_id, component, bands, count(*) FROM (SELECT "
                                "f.station_id, m.component, sum(1 << m.band) AS bands FROM "
                                "attempts AS f JOIN missed_bands AS m ON m.attempt_id = f.id WHERE "
                                "f.complete = 0 AND %1 AND %2 GROUP BY f.id, f.station_id, "
                                "m.component) AS missed GROUP BY station_id, component, bands")
                     .arg(isFirst, cohort)))
            return false;
        while (query.next()) {
            const int component = query.value(1).toInt();
            const int bands = query.value(2).toInt();
            const int units = query.value(3).toInt();
            ControlMisses& control = controlOf(component);
            control.missed += units;
            for (int band = 0; band < control.missedBands.size(); ++band)
                if ((bands >> band & 1) != 0)
                    control.missedBands[band] += units;
            stations[query.value(0).toInt()].report.missed.at(
                static_cast<std::size_t>(component)) += units;
        }
        return true;
    }

    ControlMisses& controlOf(int component)
    {
        return report.controls.at(static_cast<std::size_t>(component));
    }

    bool readOpenUnits()
    {
        QSqlQuery query(database);
        if (!run(query,
                 QStringLiteral("SELECT u.id, u.serial, u.attempts, u.tested_at, u.station_id, "
                                "m.component, m.band FROM (SELECT l.id, l.serial, l.tested_at, "
                                "l.station_id, (SELECT count(*) FROM attempts AS a WHERE a.serial "
                                "= l.serial) AS attempts %1 ORDER BY l.tested_at DESC, l.id DESC "
                                "LIMIT %2) AS u LEFT JOIN missed_bands AS m ON m.attempt_id = u.id "
                                "ORDER BY u.tested_at DESC, u.id DESC, m.component, m.band")
                     .arg(openUnitsOf(cohort))
                     .arg(Report::maxOpenUnits)))
            return false;
        qlonglong attempt = -1;
        int component = -1;
        while (query.next()) {
            if (query.value(0).toLongLong() != attempt) {
                attempt = query.value(0).toLongLong();
                component = -1;
                report.openUnits.append(OpenUnit{query.value(1).toString(),
                                                 query.value(2).toInt(),
                                                 query.value(3).toString(),
                                                 stations[query.value(4).toInt()].report.name,
                                                 0,
                                                 {}});
            }
            if (query.isNull(5))
                continue;
            OpenUnit& unit = report.openUnits.last();
            if (query.value(5).toInt() != component) {
                component = query.value(5).toInt();
                if (++unit.missedControlCount <= OpenUnit::maxMissedControls)
                    unit.missed.append(MissedControl{component, {}});
            }
            if (unit.missedControlCount <= OpenUnit::maxMissedControls)
                unit.missed.last().bands.append(query.value(6).toInt());
        }
        return true;
    }

    bool finish()
    {
        const auto none = [](const Tally& tally) { return tally.units == 0; };
        for (auto day = report.days.begin(); day != report.days.end();)
            day = none(*day) ? report.days.erase(day) : std::next(day);
        for (const Station& station : std::as_const(stations))
            if (!none(station.report.tally))
                report.stations.append(station.report);
        std::sort(report.stations.begin(), report.stations.end(),
                  [](const StationReport& a, const StationReport& b) { return a.name < b.name; });
        return true;
    }

    QSqlDatabase& database;
    Report& report;
    QString cohort;
    QHash<int, Station> stations;
};
} // namespace

Tally& Tally::operator+=(const Tally& other)
{
    units += other.units;
    attempts += other.attempts;
    passedFirst += other.passedFirst;
    passedLast += other.passedLast;
    return *this;
}

bool readReport(QSqlDatabase& database, const ReportRequest& request, Report& report,
                QString& problem)
{
    report = Report();
    report.request = request;
    Reader reader(database, report);
    // One transaction, so that the numbers agree while others import.
    database.transaction();
    const bool isRead = reader.read();
    database.rollback();
    problem = reader.problem;
    return isRead;
}

bool writeReport(QSqlDatabase& database, const ReportRequest& request, QIODevice& output,
                 QString& problem)
{
    Report report;
    if (!readReport(database, request, report, problem))
        return false;
    if (page::write(report, output))
        return true;
    problem = QStringLiteral("the page cannot be written: %1").arg(output.errorString());
    return false;
}
