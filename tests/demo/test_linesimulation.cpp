// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"
#include "yield/commands/command.h"
#include "yield/store/database.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace
{
constexpr int units = 330;
const QDate lastDay(2026, 11, 20); // a Friday

QByteArray pageIn(const QTemporaryDir& folder)
{
    QFile page(folder.filePath("yield.html"));
    return page.open(QIODevice::ReadOnly) ? page.readAll() : QByteArray();
}

Report reportIn(const QTemporaryDir& folder, const QStringList& without)
{
    Database database(folder.filePath("line/attempts.sqlite"), Database::Access::Read);
    ReportRequest request;
    request.without = without;
    request.now = QDateTime::currentDateTime();
    return readReport(database, request);
}
} // namespace

/// The rates that the demo's line is made with come out of the report.
class TestLineSimulation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rates();
    void sameEachTime();
    void problems();
};

void TestLineSimulation::rates()
{
    const QTemporaryDir folder;
    linesimulation::run(folder.path(), units, lastDay);
    const Report report = reportIn(folder, {linesimulation::knownGood});
    Tally truth; // without attempts and passedLast
    int failedFalsely = 0;
    QVector<int> missed(report.controls.size());
    const auto line = linesimulation::stations();
    for (int s = 0; s < line.size(); ++s) {
        const int here = linesimulation::unitsAt(s, units);
        int faulty = 0;
        for (const auto& [unit, rate] : line.at(s).faults) {
            const int with = qRound(rate * here);
            faulty += with;
            missed[unit.componentNum] += with;
            if (unit.fault == Fault::Swapped)
                missed[unit.componentNum + 1] += with;
        }
        const int falselyHere = qRound(line.at(s).falseFailures * here);
        const int aborted = qRound(line.at(s).aborted * here);
        failedFalsely += falselyHere;
        truth += {here, 0, here - faulty - falselyHere - aborted, 0, aborted};
        QCOMPARE(report.stations[line.at(s).name].tally.endedFirst, aborted);
    }
    missed[0] += failedFalsely;
    QCOMPARE(report.total.units, truth.units);
    QCOMPARE(report.total.passedFirst, truth.passedFirst);
    QCOMPARE(report.total.endedFirst, truth.endedFirst);
    // Repairs take days, so that whatever passed within the hour had failed falsely.
    QCOMPARE(report.falseFailures.passedNext, failedFalsely);
    QVERIFY(report.total.passedLast > truth.passedFirst + truth.endedFirst + failedFalsely);
    QVector<int> found;
    for (const ControlMisses& control : report.controls)
        found << control.missed;
    QCOMPARE(found, missed);
    // Fader 3 never reaches its upper end, fader 6 never its lower one.
    QCOMPARE(report.controls.at(3).missedBands.last(), missed.at(3));
    QCOMPARE(report.controls.at(6).missedBands.first(), missed.at(6));
    QCOMPARE(report.controls.at(roster::channelButton).units, linesimulation::unitsAt(2, units));
    QCOMPARE(report.controls.at(linesimulation::abortedAt).endedHere, truth.endedFirst);
    // Working days only. Each station tests its known-good unit every morning.
    QCOMPARE(report.days.size(), 10);
    QCOMPARE(report.days.lastKey(), lastDay);
    for (const QDate& day : report.days.keys())
        QVERIFY(day.dayOfWeek() <= Qt::Friday);
    const Report goldenOnes = reportIn(folder, {"0908*"});
    QCOMPARE(goldenOnes.total.attempts, 10 * line.size());
    QCOMPARE(goldenOnes.total.passedFirst, line.size());
    QCOMPARE(goldenOnes.repeatedUnits.at(0).first.testedAt, QString("2026-11-09T06:15:00"));
    QVERIFY(pageIn(folder).contains("3 units left out.\nMade on 2026-11-21 07:00."));
}

/// Nothing of an earlier one is left, and nothing else has changed.
void TestLineSimulation::sameEachTime()
{
    const QTemporaryDir folder;
    linesimulation::run(folder.path(), 60, lastDay);
    const QByteArray first = pageIn(folder);
    linesimulation::run(folder.path(), 3, lastDay);
    linesimulation::run(folder.path(), 60, lastDay);
    QCOMPARE(pageIn(folder), first);
}

void TestLineSimulation::problems()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("yield.html/x"));
    QVERIFY_EXCEPTION_THROWN(linesimulation::run(folder.path(), 3, lastDay), std::runtime_error);
    QFile file(folder.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY_EXCEPTION_THROWN(linesimulation::run(file.fileName(), 3, lastDay), std::runtime_error);
}

QTEST_MAIN(TestLineSimulation)
#include "test_linesimulation.moc"
