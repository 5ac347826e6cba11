// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/figures/reportcounter.h"
#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace
{
QDateTime now()
{
    return {QDate(2026, 11, 21), QTime(15, 0)};
}

/// What the model makes up and expects.
QJsonObject model(int seed, int plants)
{
    QProcess python;
    python.start(QString("/usr/bin/python3"),
                 {YIELD_MODEL, QString::number(seed), QString::number(plants)});
    constexpr int longestMs = 60000;
    python.waitForFinished(longestMs);
    const QByteArray errors = python.readAllStandardError();
    if (!errors.isEmpty())
        qWarning().noquote() << errors;
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}

// The figures as the model prints them.

QJsonArray json(const Tally& tally)
{
    return {tally.units, tally.attempts, tally.passedFirst, tally.passedLast, tally.endedFirst};
}

QJsonArray json(const QVector<int>& numbers)
{
    QJsonArray array;
    for (const int number : numbers)
        array.append(number);
    return array;
}

QJsonArray judged(const QString& name, const Tally& tally, const Limits& limits)
{
    QJsonArray array = json(tally);
    array.prepend(name);
    array.append(limits.low);
    array.append(limits.high);
    return array;
}

/// One list of the report; row makes the JSON of an item.
template <class List, class Row>
QJsonArray rows(const List& list, Row row)
{
    QJsonArray array;
    for (const auto& item : list)
        array.append(row(item));
    return array;
}

/// "passed", "failed" or "ended", and the missed bands and the end.
QJsonArray outcome(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    const auto band = [](const bandmarks::Band& missed) {
        return QJsonArray{missed.componentNum, missed.band};
    };
    return {outcome.isComplete() ? "passed"
            : outcome.endedAt    ? "ended"
                                 : "failed",
            rows(outcome.missed, band), outcome.endedAt.value_or(-1)};
}

QJsonArray tested(const Attempt& attempt)
{
    return {attempt.serial, attempt.testedAt, attempt.station, outcome(attempt)};
}

QJsonArray testedUnit(const TestedUnit& unit)
{
    return {tested(unit.first), tested(unit.last), unit.attempts};
}

QJsonArray stationReport(const StationReport& station)
{
    QJsonArray row = judged(station.name, station.tally, station.limits);
    row.append(rows(station.missed, [](int units) { return units; }));
    return row;
}

QJsonArray dayReport(const DayReport& day)
{
    return judged(day.day.toString(Qt::ISODate), day.tally, day.limits);
}

QJsonArray attemptsByNumber(const AttemptsByNumber& number)
{
    return {number.attempts, number.passed, number.endedEarly};
}

QJsonArray controlMisses(const ControlMisses& control)
{
    return {control.units, control.missed, control.endedHere, json(control.missedBands)};
}

QJsonArray stationAge(const StationAge& age)
{
    return {age.name, age.newestAt, age.seconds};
}

QJsonObject json(const Report& report)
{
    QVector<DayReport> days;
    for (auto day = report.days.cbegin(); day != report.days.cend(); ++day) {
        const auto period = timelineOf({{day.key(), *day}}, report.total).periods.first();
        days.append({day.key(), period.tally, period.limits});
    }
    const FalseFailures& failures = report.falseFailures;
    return {{"total", json(report.total)},
            {"left out", report.leftOut},
            {"days", rows(days, dayReport)},
            {"off axis", json(report.offAxis)},
            {"recent days", rows(report.recentDays, dayReport)},
            {"by number", rows(report.attemptsByNumber, attemptsByNumber)},
            {"false failures", QJsonArray{failures.failed, failures.retested, failures.passed}},
            {"stations", rows(report.stations, stationReport)},
            {"controls", rows(report.controls, controlMisses)},
            {"open", rows(report.openUnits, testedUnit)},
            {"repeated", rows(report.repeatedUnits, testedUnit)},
            {"ages", rows(report.ages, stationAge)}};
}

QByteArray text(const QJsonValue& value)
{
    return QJsonDocument({value}).toJson(QJsonDocument::Compact);
}

/// Stores the plant's logs as they come, in a few parts.
void store(Database& database, const QJsonObject& plant)
{
    constexpr int parts = 3;
    const QJsonArray logs = plant["logs"].toArray();
    for (int part = 0; part < parts; ++part) {
        QMap<QString, std::vector<StationLog>> byStation;
        for (int i = logs.size() * part / parts; i < logs.size() * (part + 1) / parts; ++i) {
            const QJsonArray log = logs[i].toArray();
            byStation[log[0].toString()].push_back(
                {log[1].toString(), log[2].toString(), BandMarks(log[3].toString().toStdString())});
        }
        const QJsonObject declared = plant["declared"].toObject();
        for (auto station = byStation.cbegin(); station != byStation.cend(); ++station)
            attemptstore::store(database, {station.key(), declared[station.key()].toBool()},
                                station.value());
    }
}

ReportRequest requestOf(const QJsonObject& request)
{
    ReportRequest asked;
    asked.since = QDate::fromString(request["since"].toString(), Qt::ISODate);
    asked.until = QDate::fromString(request["until"].toString(), Qt::ISODate);
    asked.station = request["station"].toString();
    for (const QJsonValue pattern : request["without"].toArray())
        asked.without << pattern.toString();
    asked.now = now();
    return asked;
}

Attempt attempt(const QString& serial, int minutes, const BandMarks& marks)
{
    return {QString("one"), true, serial, now().addSecs(60 * minutes).toString(Qt::ISODate), marks};
}
} // namespace

class TestFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void model_data()
    {
        QTest::addColumn<QJsonObject>("plant");
        constexpr int plants = 16;
        const QJsonObject made = ::model(908, plants);
        QCOMPARE(made["now"].toString(), now().toString(Qt::ISODate));
        int number = 0;
        for (const QJsonValue plant : made["plants"].toArray())
            QTest::addRow("plant %d", ++number) << plant.toObject();
        QCOMPARE(number, plants);
    }

    void model()
    {
        QFETCH(QJsonObject, plant);
        const QTemporaryDir folder;
        Database database(folder.filePath(QString("a.sqlite")), Database::Access::Write);
        store(database, plant);
        for (const QJsonValue value : plant["cases"].toArray()) {
            const QJsonObject request = value["request"].toObject();
            const QJsonObject found = json(readReport(database, requestOf(request)));
            const QJsonObject expected = value["figures"].toObject();
            QCOMPARE(found.keys(), expected.keys());
            for (const QString& key : expected.keys())
                QCOMPARE(key + ' ' + text(found[key]), key + ' ' + text(expected[key]));
        }
    }

    void limits()
    {
        const QJsonArray table = ::model(1, 0)["limits"].toArray();
        QVERIFY(table.size() > 100);
        for (const QJsonValue value : table) {
            QJsonArray row = value.toArray();
            const Limits found =
                limitsOf(row[0].toInt(), {row[2].toInt(), 0, row[1].toInt(), 0, 0});
            row[3] = found.low;
            row[4] = found.high;
            QCOMPARE(text(row), text(value));
        }
        const Limits some{90, 99};
        const auto verdict = [&](int passed) { return verdictOn({100, 0, passed, 0, 0}, some); };
        QVERIFY(verdict(89) == Verdict::Below && verdict(90) == Verdict::Within);
        QVERIFY(verdict(99) == Verdict::Within && verdict(100) == Verdict::Above);
    }

    /// The lists end where they are of no more use; what is counted goes on.
    void longLists()
    {
        constexpr int units = 30000;
        ReportRequest request;
        request.now = now();
        ReportCounter counter(request);
        const BandMarks marks = ~BandMarks() >> 1; // misses the last band
        for (int i = 0; i < units; ++i) {
            const QString serial = QString::number(units + i);
            counter.add(attempt(serial, i % 1000 - 2000, marks));
            for (int again = 0; again < i % 3; ++again)
                counter.add(attempt(serial, i + again, marks));
        }
        const Report report = counter.finish();
        QCOMPARE(report.total.attempts, 2 * units);
        QCOMPARE(report.openUnits.size(), Report::maxOpenUnits);
        QCOMPARE(report.openUnits.first().last.serial, QString("59999"));
        QCOMPARE(report.repeatedUnitCount, units / 3 * 2);
        QCOMPARE(report.repeatedUnits.size(), Report::maxRepeatedUnits);
        QCOMPARE(report.repeatedUnits.first().last.serial, QString("59999"));
        QCOMPARE(report.repeatedUnits.last().attempts, 3);
        request.station = "two";
        ReportCounter others(request);
        others.add(attempt("a", 0, marks)); // not asked for, but there
        QVERIFY(!others.finish().databaseIsEmpty &&
                ReportCounter(request).finish().databaseIsEmpty);
    }

    void longTimesAreWeeksOrMonths()
    {
        QMap<QDate, Tally> days;
        const Tally one{1, 1, 1, 1, 0};
        const QDate begin(2025, 12, 31); // a Wednesday
        for (int day = 0; day < 70; ++day)
            days[begin.addDays(day)] = one;
        QCOMPARE(timelineOf(days, one).length, 70);
        days[begin.addDays(70)] = one;
        const Timeline weeks = timelineOf(days, {100, 0, 10, 0, 0});
        QCOMPARE(weeks.unit, QString("week"));
        QCOMPARE(weeks.periods.first().tally.units, 5);
        QCOMPARE(weeks.periods.first().limits.high, limitsOf(5, {100, 0, 10, 0, 0}).high);
        QCOMPARE(weeks.periods.at(1).name, QString("Week of 5 Jan 2026"));
        days[begin.addYears(2)] = one;
        const Timeline months = timelineOf(days, one);
        QCOMPARE(months.length, 25);
        QCOMPARE(months.periods.size(), 5); // the months without units leave their places empty
        QCOMPARE(months.periods.at(1).tally.units, 31);
    }

    void names()
    {
        const std::vector<bandmarks::Band> missed = {{3, 0},  {3, 1},  {3, 5},  {3, 11},
                                                     {3, 12}, {18, 1}, {19, 0}, {19, 1}};
        QCOMPARE(controlnames::missed(missed),
                 QStringList({"Fader 3: 0 to 19, 50 to 59, 110 to 127", "Button 9: pressed",
                              "Button 10: all"}));
    }
};

QTEST_GUILESS_MAIN(TestFigures)
#include "test_figures.moc"
