// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"

#include "yield/logs/bandmarks.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

// The queries name the attempts that they are about: f is the first attempt at a unit, l the last.
// They run over a million attempts in a second or two because each goes along one index of the
// table attempts; docs/performance.md has the figures.

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

bool hasMoreAttempts(const RepeatedUnit& a, const RepeatedUnit& b)
{
    return std::tie(a.attempts, a.lastTestedAt) > std::tie(b.attempts, b.lastTestedAt);
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
        return readStations() && findCohort() && countAttempts() && readRepeatedUnits() &&
               countMisses() && readOpenUnits() && readOpenBands() && finish();
    }

    QString problem;

private:
    struct Station {
        StationReport report;
        bool tests18 = false;
    };

    static QString cannotBeRead(const QSqlQuery& query)
    {
        return QStringLiteral("the report cannot be read: %1")
            .arg(query.lastError().text());
    }

    bool run(QSqlQuery& query, const QString& statement)
    {
        // PostgreSQL then hands over row by row, instead of the whole result at once.
        query.setForwardOnly(true);
        if (query.exec(statement))
            return true;
        problem = cannotBeRead(query);
        return false;
    }

    /// The next row. False at the end and, with a problem, where the database fails meanwhile.
    bool next(QSqlQuery& query)
    {
        if (query.next())
            return true;
        if (query.lastError().isValid())
            problem = cannotBeRead(query);
        return false;
    }

    bool readStations()
    {
        QSqlQuery query(database);
        if (!run(query, QStringLiteral("SELECT id, name, tests_18 FROM stations")))
            return false;
        while (next(query)) {
            Station station;
            station.report.name = query.value(1).toString();
            station.tests18 = query.value(2).toInt() != 0;
            stations.insert(query.value(0).toInt(), station);
        }
        if (!run(query, QStringLiteral("SELECT 1 FROM attempts LIMIT 1")))
            return false;
        report.databaseIsEmpty = !next(query);
        return problem.isEmpty();
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

    /// Counts each attempt as one unit; readRepeatedUnits corrects the units with several.
    bool countAttempts()
    {
        QSqlQuery query(database);
        if (!run(query, QStringLiteral("SELECT f.station_id, %1, count(*), sum(f.complete) FROM "
                                       "attempts AS f WHERE %2 GROUP BY %1, f.station_id")
                            .arg(firstDay, cohort)))
            return false;
        while (next(query)) {
            const int count = query.value(2).toInt();
            const int complete = query.value(3).toInt();
            add(query.value(0).toInt(), query.value(1).toString(),
                {count, count, complete, complete});
        }
        return problem.isEmpty();
    }

    /// The units with more than one attempt, each from its first to its last.
    bool readRepeatedUnits()
    {
        QSqlQuery query(database);
        if (!run(query,
                 QStringLiteral("SELECT f.serial, f.tested_at, f.station_id, f.complete, CASE WHEN "
                                "%1 THEN 1 ELSE 0 END FROM attempts AS f WHERE f.serial IN (SELECT "
                                "serial FROM attempts GROUP BY serial HAVING count(*) > 1) ORDER "
                                "BY f.serial, f.tested_at, f.id")
                     .arg(cohort)))
            return false;
        RepeatedUnit unit;
        int firstStation = 0;
        bool isInCohort = false;
        while (next(query)) {
            const QString serial = query.value(0).toString();
            const QString testedAt = query.value(1).toString();
            const int station = query.value(2).toInt();
            const bool complete = query.value(3).toInt() != 0;
            const bool wasCounted = query.value(4).toInt() != 0;
            if (wasCounted)
                add(station, testedAt.left(10), {-1, -1, -complete, -complete});
            if (unit.attempts == 0 || serial != unit.serial) {
                if (isInCohort)
                    addRepeated(unit, firstStation);
                unit = {serial,   0,  testedAt, stations[station].report.name,
                        complete, {}, {},       false};
                firstStation = station;
                isInCohort = wasCounted;
            }
            ++unit.attempts;
            unit.lastTestedAt = testedAt;
            unit.lastStation = stations[station].report.name;
            unit.passedLast = complete;
        }
        if (isInCohort)
            addRepeated(unit, firstStation);
        keepRepeated(Report::maxRepeatedUnits);
        return problem.isEmpty();
    }

    void addRepeated(const RepeatedUnit& unit, int firstStation)
    {
        add(firstStation, unit.firstTestedAt.left(10),
            {1, unit.attempts, unit.passedFirst, unit.passedLast});
        ++report.repeatedUnitCount;
        report.repeatedUnits.append(unit);
        // Now and then, so that neither the list nor the time to sort it grows.
        if (report.repeatedUnits.size() == 8 * Report::maxRepeatedUnits)
            keepRepeated(Report::maxRepeatedUnits);
    }

    void keepRepeated(int most)
    {
        auto& units = report.repeatedUnits;
        std::stable_sort(units.begin(), units.end(), hasMoreAttempts);
        units.resize(std::min(most, units.size()));
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
                                "f.complete = 0 AND %1 AND %2 GROUP BY f.tested_at, f.id, "
                                "f.station_id, m.component) AS missed GROUP BY station_id, "
                                "component, bands")
                     .arg(isFirst, cohort)))
            return false;
        while (next(query)) {
            const int componentNum = query.value(1).toInt();
            const int bands = query.value(2).toInt();
            const int units = query.value(3).toInt();
            ControlMisses& control = controlOf(componentNum);
            control.missed += units;
            for (int band = 0; band < control.missedBands.size(); ++band)
                if ((bands >> band & 1) != 0)
                    control.missedBands[band] += units;
            stations[query.value(0).toInt()].report.missed.at(
                static_cast<std::size_t>(componentNum)) += units;
        }
        return problem.isEmpty();
    }

    ControlMisses& controlOf(int componentNum)
    {
        return report.controls.at(static_cast<std::size_t>(componentNum));
    }

    bool readOpenUnits()
    {
        QSqlQuery query(database);
        // A cross join, because SQLite then goes along the attempts that are not complete.
        if (!run(query,
                 QStringLiteral("SELECT l.id, l.serial, l.tested_at, l.station_id, (SELECT "
                                "count(*) FROM attempts AS a WHERE a.serial = l.serial) FROM "
                                "attempts AS l CROSS JOIN attempts AS f WHERE l.complete = 0 AND "
                                "f.serial = l.serial AND %1 AND %2 AND %3 ORDER BY l.tested_at "
                                "DESC, l.id DESC LIMIT %4")
                     .arg(isLast, isFirst, cohort)
                     .arg(Report::maxOpenUnits)))
            return false;
        while (next(query)) {
            openUnitOf.insert(query.value(0).toString(), report.openUnits.size());
            report.openUnits.append(OpenUnit{query.value(1).toString(),
                                             query.value(4).toInt(),
                                             query.value(2).toString(),
                                             stations[query.value(3).toInt()].report.name,
                                             0,
                                             {}});
        }
        return problem.isEmpty();
    }

    /// What the last attempts at the units not complete missed.
    bool readOpenBands()
    {
        if (openUnitOf.isEmpty())
            return true;
        const QStringList attempts = openUnitOf.keys();
        QSqlQuery query(database);
        if (!run(query, QStringLiteral("SELECT attempt_id, component, band FROM missed_bands WHERE "
                                       "attempt_id IN (%1) ORDER BY attempt_id, component, band")
                            .arg(attempts.join(QLatin1Char(',')))))
            return false;
        QString attempt;
        int componentNum = -1;
        while (next(query)) {
            const bool isSame =
                query.value(0).toString() == attempt && query.value(1).toInt() == componentNum;
            attempt = query.value(0).toString();
            componentNum = query.value(1).toInt();
            OpenUnit& unit = report.openUnits[openUnitOf.value(attempt)];
            if (!isSame && ++unit.missedControlCount <= OpenUnit::maxMissedControls)
                unit.missed.append(MissedControl{componentNum, {}});
            if (unit.missedControlCount <= OpenUnit::maxMissedControls)
                unit.missed.last().bands.append(query.value(2).toInt());
        }
        return problem.isEmpty();
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
    QHash<int, Station> stations;   ///< By id.
    QHash<QString, int> openUnitOf; ///< The index in openUnits by the attempt's id.
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
