// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/logcheck.h"

#include "tests/app/expectedlog.h"

#include <QTest>

#include <functional>

Q_DECLARE_METATYPE(UnitFault)

namespace
{
QByteArray wholeLog()
{
    return expectedLog("1", "Sat Nov 21 07:00:00 2026", [](int c) { return c != 18; });
}

/// The log with one line of one component's block replaced.
QByteArray changed(QByteArray log, const QByteArray& component, const QByteArray& line,
                   const QByteArray& replacement)
{
    const int block = log.indexOf("(Component " + component + ")");
    const int place = log.indexOf(line, block);
    return log.replace(place, line.size(), replacement);
}
} // namespace

class TestLogCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryComponent();
    void acceptsAWholeRun();
    void findsDifferences_data();
    void findsDifferences();
    void faultsLeaveTheirBandsUncovered_data();
    void faultsLeaveTheirBandsUncovered();
};

void TestLogCheck::readsEveryComponent()
{
    const auto coverage = logcheck::readCoverage(wholeLog());
    QCOMPARE(coverage.size(), 44);
    QCOMPARE(coverage[8], QVector<int>(13, 1));
    QCOMPARE(coverage[9], QVector<int>(2, 1));
    QCOMPARE(coverage[18], QVector<int>(2, 0));
    QVERIFY(coverage[39].isEmpty());
    QCOMPARE(coverage[43], QVector<int>(13, 1));
    QVERIFY(logcheck::readCoverage({}).isEmpty());
}

void TestLogCheck::acceptsAWholeRun()
{
    QCOMPARE(logcheck::differences(wholeLog(), {}, false), QString());
    QVERIFY(logcheck::differences(wholeLog(), {}, true).contains(QStringLiteral("component 18")));
    const auto withMarker = expectedLog("1", "", [](int) { return true; });
    QCOMPARE(logcheck::differences(withMarker, {}, true), QString());
}

void TestLogCheck::findsDifferences_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QString>("named");
    QTest::newRow("uncovered first band")
        << changed(wholeLog(), "0", "Range 0: 1", "Range 0: 0") << QStringLiteral("component 0 ");
    QTest::newRow("uncovered last band") << changed(wholeLog(), "43", "Range 12: 1", "Range 12: 0")
                                         << QStringLiteral("component 43 ");
    QTest::newRow("half a band") << changed(wholeLog(), "20", "Range 1: 1", "Range 1: 0.5")
                                 << QStringLiteral("component 20 ");
    QTest::newRow("a band too few")
        << changed(wholeLog(), "9", "\r\nRange 1: 1", "") << QStringLiteral("component 9 ");
    QTest::newRow("a component too few")
        << changed(wholeLog(), "30", "(Component 30)", "") << QStringLiteral("component 30 ");
    QTest::newRow("power button tested")
        << changed(wholeLog(), "39", " NOT TESTED (Power Button)", "Range 0: 1")
        << QStringLiteral("component 39 ");
    QTest::newRow("empty file") << QByteArray() << QStringLiteral("component 0 ");
}

void TestLogCheck::findsDifferences()
{
    QFETCH(QByteArray, log);
    QFETCH(QString, named);
    const QString differences = logcheck::differences(log, {}, false);
    QVERIFY2(differences.contains(named), qPrintable(differences));
}

void TestLogCheck::faultsLeaveTheirBandsUncovered_data()
{
    QTest::addColumn<UnitFault>("unit");
    QTest::addColumn<QVector<int>>("bands");
    const QVector<int> all{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    QVector<int> row = all;
    row[0] = 0;
    QTest::newRow("no low end") << UnitFault{Fault::NoLowEnd, 2} << row;
    row = all;
    row[12] = 0;
    QTest::newRow("no high end") << UnitFault{Fault::NoHighEnd, 41} << row;
    row.fill(0);
    QTest::newRow("swapped") << UnitFault{Fault::Swapped, 5} << row;
    row[6] = 1;
    QTest::newRow("stuck fader") << UnitFault{Fault::Stuck, 3} << row;
    QTest::newRow("stuck button") << UnitFault{Fault::Stuck, 10} << QVector<int>{0, 0};
    QTest::newRow("weak button") << UnitFault{Fault::WeakButton, 11} << QVector<int>{1, 0};
    QTest::newRow("chatter") << UnitFault{Fault::Chatter, 14} << QVector<int>{1, 1};
    QTest::newRow("flood") << UnitFault{Fault::Flood, 6} << all;
    QTest::newRow("cable pulled") << UnitFault{Fault::CablePulled, 1} << all;
    QTest::newRow("too early") << UnitFault{Fault::TooEarly, 4} << all;
}

void TestLogCheck::faultsLeaveTheirBandsUncovered()
{
    QFETCH(UnitFault, unit);
    QFETCH(QVector<int>, bands);
    for (int band = 0; band < bands.size(); ++band)
        QCOMPARE(unitfault::leavesUncovered(unit, unit.component, band), bands[band] == 0);
    // Only a swap reaches to the next component, and nothing goes beyond it.
    const bool isSwap = unit.fault == Fault::Swapped;
    QCOMPARE(unitfault::leavesUncovered(unit, unit.component + 1, 0), isSwap);
    QVERIFY(!unitfault::leavesUncovered(unit, unit.component + 2, 0));
}

QTEST_GUILESS_MAIN(TestLogCheck)
#include "test_logcheck.moc"
