// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"
#include "demo/panelrun.h"
#include "tests/support/station.h"
#include "yield/commands/command.h"

using linesimulation::LineStation;

namespace
{
constexpr int units = 330;
const QDate lastDay(2026, 11, 20); // a Friday

Report reportIn(const QTemporaryDir& folder, const QString& exclude)
{
    Database database(folder.filePath("simulated-line/attempts.sqlite"), Database::Access::Read);
    ReportRequest request;
    request.exclude << exclude;
    request.now = QDateTime::currentDateTime();
    return readReport(database, request);
}
/// Whether a run can cover a band of a component when the component `faulty` has that fault.
bool canBeCovered(Fault fault, int faulty, int component, int band)
{
    if (fault == Fault::Swapped)
        return component != faulty && component != faulty + 1;
    if (component != faulty)
        return true;
    const bool isButton = faulty >= 9 && faulty < 40;
    const QMap<Fault, bool> isCovered{{Fault::Stuck, band == 6 && !isButton},
                                      {Fault::NoLowEnd, band != 0},
                                      {Fault::NoHighEnd, band != 12},
                                      {Fault::WeakButton, band != 1}};
    return isCovered.value(fault, true);
}
} // namespace

/// The simulated unit and its program, the simulated line, whose rates come out of the report, and
/// the program zorvi_demo.
class TestDemo : public QObject
{
    Q_OBJECT

    const QTemporaryDir folder;
    const QVector<LineStation> stations = linesimulation::stations();

private Q_SLOTS:
    /// Nothing of the earlier one is left.
    void initTestCase()
    {
        for (const int count : {3, units})
            linesimulation::run(folder.path(), count, lastDay);
    }

    /// The station's panels cover of a unit with a fault, on some component of each kind, what can
    /// be covered of it, and the demo accepts that log and no other.
    void faults()
    {
        const QDateTime date({2026, 11, 21}, {7, 0});
        PanelRun panels;
        for (const QString& name : unitfault::names()) {
            const Fault fault = *unitfault::fromName(name);
            QVERIFY(unitfault::applies(fault, unitfault::defaultComponent(fault)));
            for (const int faulty : {3, 4, 11, 14, 41}) {
                const UnitFault unit{fault, faulty};
                if (!unitfault::applies(fault, faulty))
                    continue;
                const auto lines = testlog::lines("1", date, panels.coverageOf(unit, true));
                QByteArray log = testlog::bytes(lines);
                const auto isCovered = [&](int component, int band) {
                    return canBeCovered(fault, faulty, component, band);
                };
                QCOMPARE(log, expectedLog("1", "Sat Nov 21 07:00:00 2026", isCovered));
                QCOMPARE(panels.differences(log, unit, true), QString());
                QCOMPARE(panels.differences(log, unit, false),
                         QString("component 18 differs in band 0 1"));
                log.replace(log.lastIndexOf("Range 7: 1"), 10, "Range 7: 0");
                QVERIFY(panels.differences(log, unit, true).endsWith(" differs in band 7"));
            }
        }
    }

    /// zorvi_unit names the error in one line.
    void rejectsBadOptions()
    {
        QVector<std::pair<QString, QByteArray>> options{{"--pace nan", "--pace"},
                                                        {"--fault broken", "no-low-end"},
                                                        {"--runs 1.5", "--runs"},
                                                        {"--delay -1", "--delay"},
                                                        {"--component 39", "\"39\""},
                                                        {"--fault weak-button --component 8", "8"},
                                                        {"--fault swapped --component 17", "17"},
                                                        {"loud", "loud"}};
        if (!QFileInfo::exists("/dev/snd/seq"))
            options << std::pair("", "/dev/snd/seq");
        for (const auto& [arguments, error] : options) {
            station::Program unit(ZORVI_UNIT, arguments);
            QCOMPARE(unit.status(), 1);
            const QByteArray printed = unit.readAllStandardError();
            QVERIFY2(printed.contains(error) && printed.count('\n') == 1, printed);
        }
    }

    void yields()
    {
        const Report report = reportIn(folder, linesimulation::knownGood);
        int failed = 0;
        int aborted = 0;
        int falseFailures = 0;
        for (int s = 0; s < stations.size(); ++s) {
            const int count = linesimulation::unitsAt(s, units);
            for (const auto& fault : stations.at(s).faults)
                failed += qRound(fault.rate * count);
            falseFailures += qRound(stations.at(s).falseFailures * count);
            aborted += qRound(stations.at(s).aborted * count);
        }
        const int passed = units - failed - aborted - falseFailures;
        QCOMPARE(report.total.units, units);
        QCOMPARE(report.total.passedFirst, passed);
        // Repairs take days: only false failures pass within the hour.
        QCOMPARE(report.falseFailures, falseFailures);
        QVERIFY(report.total.passedLast > passed + aborted + falseFailures);
        QCOMPARE(report.controls.at(linesimulation::abortedAt).aborted, aborted);
        QVERIFY(report.testTimes.medianSeconds > 150 && report.testTimes.medianSeconds < 240);
        QCOMPARE(report.controls.at(0).failed, falseFailures);
        QCOMPARE(report.controls.at(18).units, linesimulation::unitsAt(2, units));
        // Working days only.
        QCOMPARE(report.days.size(), 10);
        QCOMPARE(report.days.lastKey(), lastDay);
        for (const QDate& day : report.days.keys())
            QVERIFY(day.dayOfWeek() <= Qt::Friday);
    }

    /// Each station tests its known-good unit every morning.
    void knownGoodUnits()
    {
        const Report report = reportIn(folder, "0908*");
        QCOMPARE(report.total.attempts, 10 * stations.size());
        QCOMPARE(report.total.passedFirst, stations.size());
        QCOMPARE(report.retestedUnits.begin()->second.first.testedAt,
                 QString("2026-11-09T06:15:00"));
        QVERIFY(station::contentOf(folder.filePath("yield.html"))
                    .contains("excluding KG-*: 3 units excluded. Made on 2026-11-21"));
    }

    /// Whole runs at the same time: what they take is mostly pauses.
    void demos()
    {
        const QTemporaryDir pictures;
        const QString once = "--once --output " + pictures.path();
        QElapsedTimer time;
        time.start();
        station::Program good(ZORVI_DEMO, once + " --pace 2000 --fault cable-pulled");
        station::Program weak(ZORVI_DEMO, once + "/2 --tarvek --fault weak-button --component 18");
        station::Program noLog(ZORVI_DEMO, once + "/3 --serial no/such/folder");

        QCOMPARE(good.status(), 0);
        QVERIFY(time.elapsed() > 6000); // of this five seconds without the cable
        const QByteArray printed = good.readAllStandardOutput();
        QVERIFY2(printed.count(" passed.") == 42 && printed.contains("ZORVI_DEMO.txt"), printed);
        QImage last;
        for (const char* name : {"start.png", "middle.png", "end.png"}) {
            const QImage picture(pictures.filePath(name));
            QVERIFY2(!picture.isNull() && picture != last, name);
            last = picture;
        }
        QCOMPARE(weak.status(), 0);
        QCOMPARE(weak.readAllStandardOutput().count("did not pass"), 1);
        QCOMPARE(noLog.status(), 1);
        QVERIFY(noLog.readAllStandardError().contains("there is no log"));
    }
};

QTEST_MAIN(TestDemo)
#include "test_demo.moc"
