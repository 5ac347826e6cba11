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

/// Units whose first attempt fails, by control, as the rates say.
QVector<int> expectedFailures(const QVector<LineStation>& stations)
{
    QVector<int> failed(roster::componentCount);
    for (int s = 0; s < stations.size(); ++s) {
        const int here = linesimulation::unitsAt(s, units);
        for (const auto& [unit, rate] : stations.at(s).faults) {
            failed[unit.componentNum] += qRound(rate * here);
            if (unit.fault == Fault::Swapped)
                failed[unit.componentNum + 1] += qRound(rate * here);
        }
        failed[0] += qRound(stations.at(s).falseFailures * here);
    }
    return failed;
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
        int aborted = 0;
        int falseFailures = 0;
        int passed = 0;
        for (int s = 0; s < stations.size(); ++s) {
            const int here = linesimulation::unitsAt(s, units);
            const int abortedHere = qRound(stations.at(s).aborted * here);
            const int falseHere = qRound(stations.at(s).falseFailures * here);
            int faulty = 0;
            for (const auto& fault : stations.at(s).faults)
                faulty += qRound(fault.rate * here);
            QCOMPARE(report.stations[stations.at(s).name].tally.abortedFirst, abortedHere);
            aborted += abortedHere;
            falseFailures += falseHere;
            passed += here - faulty - falseHere - abortedHere;
        }
        QCOMPARE(report.total.units, units);
        QCOMPARE(report.total.passedFirst, passed);
        QCOMPARE(report.total.abortedFirst, aborted);
        // Repairs take days: only false failures pass within the hour.
        QCOMPARE(report.falseFailures, falseFailures);
        QVERIFY(report.total.passedLast > passed + aborted + falseFailures);
        QCOMPARE(report.controls.at(linesimulation::abortedAt).aborted, aborted);
        QVERIFY(report.testTimes.medianSeconds > 150 && report.testTimes.medianSeconds < 240);
    }

    void controls()
    {
        QVector<int> failed;
        for (const ControlFailures& control : report.controls)
            failed << control.failed;
        QCOMPARE(failed, expectedFailures(stations));
        // Fader 3 never reaches its upper end, fader 6 never its lower one.
        QCOMPARE(report.controls.at(3).missedBands.last(), failed.at(3));
        QCOMPARE(report.controls.at(6).missedBands.first(), failed.at(6));
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
        QCOMPARE(knownGood.retestedUnits.at(0).first.testedAt, QString("2026-11-09T06:15:00"));
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
        QVERIFY_EXCEPTION_THROWN(linesimulation::run(other.path(), 3, lastDay), std::runtime_error);
        QFile file(other.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY_EXCEPTION_THROWN(linesimulation::run(file.fileName(), 3, lastDay),
                                 std::runtime_error);
    }
};

QTEST_MAIN(TestLineSimulation)
#include "test_linesimulation.moc"
