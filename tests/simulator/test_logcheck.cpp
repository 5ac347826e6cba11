// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/logcheck.h"

#include "tests/app/expectedlog.h"

#include <QTest>

namespace
{
const QByteArray date = "Sat Nov 21 07:00:00 2026";

QByteArray wholeLog()
{
    return expectedLog("1", date, [](int c) { return c != 18; });
}
} // namespace

class TestLogCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void acceptsAWholeRun()
    {
        QCOMPARE(logcheck::differences(wholeLog(), {}, false), QString());
        QVERIFY(logcheck::differences(wholeLog(), {}, true).contains("component 18"));
        const auto withMarker = expectedLog("1", date, [](int) { return true; });
        QCOMPARE(logcheck::differences(withMarker, {}, true), QString());
    }

    /// The log with one line of one component's block replaced.
    void findsDifferences_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("replacement");
        const auto row = [](const char* name, int component, const QByteArray& line,
                            const QByteArray& instead) {
            QTest::newRow(name) << component << line << instead;
        };
        row("uncovered first band", 0, "Range 0: 1", "Range 0: 0");
        row("uncovered last band", 43, "Range 12: 1", "Range 12: 0");
        row("no log", 20, "Range 1: 1", "Range 1: 0.5");
    }

    void findsDifferences()
    {
        QFETCH(int, component);
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, replacement);
        QByteArray log = wholeLog();
        const int block = log.indexOf("(Component " + QByteArray::number(component) + ")");
        log.replace(qMax(0, log.indexOf(line, block)), line.size(), replacement);
        const QString differences = logcheck::differences(log, {}, false);
        QVERIFY2(differences.contains(QStringLiteral("component %1 ").arg(component)),
                 qPrintable(differences));
    }

    void faultsLeaveTheirBandsUncovered_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<QString>("bands"); // 0: left uncovered
        QTest::newRow("no-low-end") << 2 << "0111111111111";
        QTest::newRow("no-high-end") << 41 << "1111111111110";
        QTest::newRow("swapped") << 5 << "0000000000000";
        QTest::newRow("stuck") << 3 << "0000001000000";
        QTest::newRow("weak-button") << 11 << "10";
        QTest::newRow("chatter") << 14 << "11";
        QTest::newRow("flood") << 6 << "1111111111111";
        QTest::newRow("cable-pulled") << 1 << "1111111111111";
        QTest::newRow("too-early") << 4 << "1111111111111";
    }

    void faultsLeaveTheirBandsUncovered()
    {
        QFETCH(int, component);
        QFETCH(QString, bands);
        const UnitFault unit{unitfault::fromName(QTest::currentDataTag()).value(), component};
        for (int band = 0; band < bands.size(); ++band)
            QCOMPARE(unitfault::leavesUncovered(unit, component, band), bands[band] == '0');
        // Only a swap reaches to the next component, and nothing goes beyond it.
        QCOMPARE(unitfault::leavesUncovered(unit, component + 1, 0), unit.fault == Fault::Swapped);
        QVERIFY(!unitfault::leavesUncovered(unit, component + 2, 0));
    }
};

QTEST_GUILESS_MAIN(TestLogCheck)
#include "test_logcheck.moc"
