// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"
#include "yield/commands/command.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using linesimulation::LineStation;

namespace
{
constexpr int units = 330;
const QDate lastDay(2026, 11, 20); // a Friday

QByteArray pageIn(const QTemporaryDir& folder)
{
    QFile page(folder.filePath("yield.html"));
    return page.open(QIODevice::ReadOnly) ? page.readAll() : QByteArray();
}

Report reportIn(const QTemporaryDir& folder, const QString& exclude)
{
    Database database(folder.filePath("simulated-line/attempts.sqlite"), Database::Access::Read);
    ReportRequest request;
    request.exclude << exclude;
    request.now = QDateTime::currentDateTime();
    return readReport(database, request);
}
} // namespace

/// The rates that the line is simulated with come out of the report.
class TestLineSimulation : public QObject
{
    Q_OBJECT

    const QTemporaryDir folder;
    const QVector<LineStation> stations = linesimulation::stations();
    Report report;

private Q_SLOTS:
    void initTestCase()
    {
        linesimulation::run(folder.path(), units, lastDay);
        report = reportIn(folder, linesimulation::knownGood);
    }

    void yields()
    {
        int failed = 0;
        int aborted = 0;
        int falseFailures = 0;
        QVector<int> failures(roster::componentCount); // of first attempts, by control
        for (int s = 0; s < stations.size(); ++s) {
            const int count = linesimulation::unitsAt(s, units);
            for (const auto& [unit, rate] : stations.at(s).faults) {
                failed += qRound(rate * count);
                failures[unit.componentNum] += qRound(rate * count);
                if (unit.fault == Fault::Swapped)
                    failures[unit.componentNum + 1] += qRound(rate * count);
            }
            falseFailures += qRound(stations.at(s).falseFailures * count);
            const int abortedHere = qRound(stations.at(s).aborted * count);
            QCOMPARE(report.stations[stations.at(s).name].tally.abortedFirst, abortedHere);
            aborted += abortedHere;
        }
        failures[0] += falseFailures;
        const int passed = units - failed - aborted - falseFailures;
        QCOMPARE(report.total.units, units);
        QCOMPARE(report.total.passedFirst, passed);
        QCOMPARE(report.total.abortedFirst, aborted);
        // Repairs take days: only false failures pass within the hour.
        QCOMPARE(report.falseFailures, falseFailures);
        QVERIFY(report.total.passedLast > passed + aborted + falseFailures);
        QCOMPARE(report.controls.at(linesimulation::abortedAt).aborted, aborted);
        QVERIFY(report.testTimes.medianSeconds > 150 && report.testTimes.medianSeconds < 240);

        for (int c = 0; c < failures.size(); ++c)
            QCOMPARE(report.controls.at(c).failed, failures.at(c));
        // Fader 3 never reaches its upper end, fader 6 never its lower one.
        QCOMPARE(report.controls.at(3).missedBands.last(), failures.at(3));
        QCOMPARE(report.controls.at(6).missedBands.first(), failures.at(6));
        QCOMPARE(report.controls.at(18).units, linesimulation::unitsAt(2, units));
    }

    /// Working days only. Each station tests its known-good unit every morning.
    void days()
    {
        QCOMPARE(report.days.size(), 10);
        QCOMPARE(report.days.lastKey(), lastDay);
        for (const QDate& day : report.days.keys())
            QVERIFY(day.dayOfWeek() <= Qt::Friday);
        const Report knownGood = reportIn(folder, "0908*");
        QCOMPARE(knownGood.total.attempts, 10 * stations.size());
        QCOMPARE(knownGood.total.passedFirst, stations.size());
        QCOMPARE(knownGood.retestedUnits.begin()->second.first.testedAt,
                 QString("2026-11-09T06:15:00"));
        QVERIFY(pageIn(folder).contains("excluding KG-*: 3 units excluded. Made on 2026-11-21"));
    }

    /// Nothing of an earlier one is left, and nothing else has changed.
    void sameEachTime()
    {
        const QTemporaryDir other;
        for (const int count : {3, units})
            linesimulation::run(other.path(), count, lastDay);
        QCOMPARE(pageIn(other), pageIn(folder));
    }

    void problems()
    {
        const QTemporaryDir other;
        QVERIFY(QDir(other.path()).mkpath("yield.html/x"));
        for (const QString& path : {other.path(), QString("/dev/null")})
            QVERIFY_EXCEPTION_THROWN(linesimulation::run(path, 3, lastDay), std::runtime_error);
    }
};

QTEST_MAIN(TestLineSimulation)
#include "test_linesimulation.moc"
