// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"
#include "yield/commands/command.h"
#include "yield/page/figuretext.h"
#include "yield/store/database.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace
{
constexpr int units = 330;
const QDate lastDay(2026, 11, 20); // a Friday

ControlMisses control(const Report& report, int component)
{
    return report.controls.at(static_cast<std::size_t>(component));
}
} // namespace

/// The rates that the demo's line is made with come out of the report.
class TestFortnight : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void yields();
    void controls();
    void knownGoodUnits();

private:
    QTemporaryDir folder;
    Report report; ///< Without the known-good units.
    Tally truth;   ///< Without attempts and passedLast.
    int falseFailures = 0;
    std::array<int, roster::componentCount> missed{};
};

void TestFortnight::initTestCase()
{
    QString problem;
    QVERIFY2(fortnight::make(folder.path(), units, lastDay, problem), qPrintable(problem));
    Database database(folder.filePath("fortnight/attempts.sqlite"), Database::Access::Read);
    ReportRequest request;
    request.without << fortnight::knownGood;
    report = readReport(database, request);

    const auto line = fortnight::line();
    for (int s = 0; s < line.size(); ++s) {
        const int here = fortnight::unitsAt(s, units);
        int faulty = 0;
        for (const auto& [unit, rate] : line.at(s).faults) {
            const int with = qRound(rate * here);
            faulty += with;
            missed.at(static_cast<std::size_t>(unit.componentNum)) += with;
            if (unit.fault == Fault::Swapped)
                missed.at(static_cast<std::size_t>(unit.componentNum) + 1) += with;
        }
        const int failedFalsely = qRound(line.at(s).falseFailures * here);
        const int brokenOff = qRound(line.at(s).brokenOff * here);
        missed.front() += failedFalsely;
        falseFailures += failedFalsely;
        truth += {here, 0, here - faulty - failedFalsely - brokenOff, 0, brokenOff};
    }
    QVERIFY(falseFailures > 3 && truth.endedFirst > 3);
}

void TestFortnight::yields()
{
    QCOMPARE(report.total.units, units);
    QCOMPARE(truth.units, units);
    QCOMPARE(report.total.passedFirst, truth.passedFirst);
    QCOMPARE(report.total.endedFirst, truth.endedFirst);
    QCOMPARE(report.openUnits.size(), units - report.total.passedLast);
    const auto line = fortnight::line();
    QCOMPARE(report.stations.size(), line.size());
    for (int s = 0; s < line.size(); ++s)
        QCOMPARE(report.stations.at(s).tally.endedFirst,
                 qRound(line.at(s).brokenOff * fortnight::unitsAt(s, units)));
    // Repairs take days, so that whatever passed within the hour had failed falsely.
    QCOMPARE(report.falseFailures.passed, falseFailures);
    QCOMPARE(report.falseFailures.retested, falseFailures);
    QVERIFY(report.falseFailures.failed >= units - truth.passedFirst - truth.endedFirst);
    QCOMPARE(report.days.size(), 10);
    QCOMPARE(report.days.lastKey(), lastDay);
    for (const QDate& day : report.days.keys())
        QVERIFY(day.dayOfWeek() <= Qt::Friday);
    QFile page(folder.filePath("yield.html"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    QVERIFY(page.readAll().contains(figuretext::percent(truth.passedFirst, units).toUtf8()));
}

void TestFortnight::controls()
{
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        QCOMPARE(control(report, c).missed, missed.at(static_cast<std::size_t>(c)));
    // Fader 3 never reaches its upper end, fader 6 never its lower one.
    QCOMPARE(control(report, 3).missedBands.last(), control(report, 3).missed);
    QCOMPARE(control(report, 3).missedBands.first(), 0);
    QCOMPARE(control(report, 6).missedBands.first(), control(report, 6).missed);
    QCOMPARE(control(report, roster::channelButton).units, fortnight::unitsAt(2, units));
    QCOMPARE(control(report, fortnight::brokenOffAt).endedHere, truth.endedFirst);
    QCOMPARE(control(report, fortnight::brokenOffAt - 1).units, units);
    QCOMPARE(control(report, fortnight::brokenOffAt).units, units - truth.endedFirst);
}

/// Each was tested every morning, and each of these tests counts.
void TestFortnight::knownGoodUnits()
{
    const int stations = fortnight::line().size();
    QCOMPARE(report.leftOut, stations);
    Database database(folder.filePath("fortnight/attempts.sqlite"), Database::Access::Read);
    const Report with = readReport(database, {});
    QCOMPARE(with.total.units, units + stations);
    QCOMPARE(with.total.attempts, report.total.attempts + 10 * stations);
    QCOMPARE(with.repeatedUnits.at(stations - 1).attempts, 10);
}

QTEST_MAIN(TestFortnight)
#include "test_fortnight.moc"
