// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"
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
    Database database(folder.filePath("fortnight/attempts.sqlite"), Database::Access::Read);
    ReportRequest request;
    request.exclude = without;
    request.now = QDateTime::currentDateTime();
    return readReport(database, request);
}
} // namespace

/// The rates that the demo's line is made with come out of the report.
class TestFortnight : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rates();
    void sameEachTime();
    void problems();
};

void TestFortnight::rates()
{
    const QTemporaryDir folder;
    QString problem;
    QVERIFY2(fortnight::make(folder.path(), units, lastDay, problem), qPrintable(problem));
    const Report report = reportIn(folder, {fortnight::knownGood});
    Tally truth; // without attempts and passedLast
    int failedFalsely = 0;
    QVector<int> missed(report.controls.size());
    const auto line = fortnight::line();
    for (int s = 0; s < line.size(); ++s) {
        const int here = fortnight::unitsAt(s, units);
        int faulty = 0;
        for (const auto& [unit, rate] : line.at(s).faults) {
            const int with = qRound(rate * here);
            faulty += with;
            missed[unit.componentNum] += with;
            if (unit.fault == Fault::Swapped)
                missed[unit.componentNum + 1] += with;
        }
        const int falselyHere = qRound(line.at(s).falseFailures * here);
        const int brokenOff = qRound(line.at(s).brokenOff * here);
        failedFalsely += falselyHere;
        truth += {here, 0, here - faulty - falselyHere - brokenOff, 0, brokenOff};
        QCOMPARE(report.stations[line.at(s).name].tally.abortedFirst, brokenOff);
    }
    missed[0] += failedFalsely;
    QCOMPARE(report.total.units, truth.units);
    QCOMPARE(report.total.passedFirst, truth.passedFirst);
    QCOMPARE(report.total.abortedFirst, truth.abortedFirst);
    // Repairs take days, so that whatever passed within the hour had failed falsely.
    QCOMPARE(report.falseFailures.passedNext, failedFalsely);
    QVERIFY(report.total.passedLast > truth.passedFirst + truth.abortedFirst + failedFalsely);
    QVector<int> found;
    for (const ControlFailures& control : report.controls)
        found << control.failed;
    QCOMPARE(found, missed);
    // Fader 3 never reaches its upper end, fader 6 never its lower one.
    QCOMPARE(report.controls.at(3).missedBands.last(), missed.at(3));
    QCOMPARE(report.controls.at(6).missedBands.first(), missed.at(6));
    QCOMPARE(report.controls.at(roster::channelButton).units, fortnight::unitsAt(2, units));
    QCOMPARE(report.controls.at(fortnight::brokenOffAt).aborted, truth.abortedFirst);
    // Working days only. Each station tests its known-good unit every morning.
    QCOMPARE(report.days.size(), 10);
    QCOMPARE(report.days.lastKey(), lastDay);
    for (const QDate& day : report.days.keys())
        QVERIFY(day.dayOfWeek() <= Qt::Friday);
    const Report goldenOnes = reportIn(folder, {"0908*"});
    QCOMPARE(goldenOnes.total.attempts, 10 * line.size());
    QCOMPARE(goldenOnes.total.passedFirst, line.size());
    QCOMPARE(goldenOnes.retestedUnits.at(0).first.testedAt, QString("2026-11-09T06:15:00"));
    QVERIFY(pageIn(folder).contains("3 units excluded. Made on 2026-11-21 07:00."));
}

/// Nothing of an earlier one is left, and nothing else has changed.
void TestFortnight::sameEachTime()
{
    const QTemporaryDir folder;
    QString problem;
    QVERIFY(fortnight::make(folder.path(), 60, lastDay, problem));
    const QByteArray first = pageIn(folder);
    QVERIFY(fortnight::make(folder.path(), 3, lastDay, problem));
    QVERIFY(fortnight::make(folder.path(), 60, lastDay, problem));
    QCOMPARE(pageIn(folder), first);
}

void TestFortnight::problems()
{
    const QTemporaryDir folder;
    QString problem;
    QVERIFY(QDir(folder.path()).mkpath("yield.html/x"));
    QVERIFY(!fortnight::make(folder.path(), 3, lastDay, problem));
    QVERIFY2(problem.contains("yield.html: "), qPrintable(problem));
    const QString file = folder.filePath("file");
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    QVERIFY(!fortnight::make(file, 3, lastDay, problem));
    QVERIFY2(problem.contains("cannot be made"), qPrintable(problem));
}

QTEST_MAIN(TestFortnight)
#include "test_fortnight.moc"
