// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/logcheck.h"

#include "tests/support/expectedlog.h"

#include <QTest>

namespace
{
const QByteArray date = "Sat Nov 21 07:00:00 2026";
}

class TestLogCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The log of a whole run, then with one line of one component's block replaced.
    void findsDifferences()
    {
        const std::tuple<QByteArray, QByteArray, QByteArray> changes[] = {
            {"component 43 ", "Range 12: 1", "Range 12: 0"},
            {"component 18 ", "Range 0: 0", "Range 0: 1"},
            {"", "Range 1: 1", "Range 1: 0.5"}};
        for (const auto& [expected, line, replacement] : changes) {
            QByteArray log = expectedLog("1", date, [](int c) { return c != 18; });
            QCOMPARE(logcheck::differences(log, {}, false), QString());
            log.replace(log.lastIndexOf(line), line.size(), replacement);
            const QString found = logcheck::differences(log, {}, false);
            QVERIFY2(!found.isEmpty() && found.contains(expected), qPrintable(found));
        }
    }

    /// At a station with the marker, of a unit with a fault.
    void expectsTheFault()
    {
        const UnitFault unit{Fault::NoLowEnd, 2};
        const auto log =
            expectedLog("1", date, [](int c, int band) { return c != 2 || band != 0; });
        QCOMPARE(logcheck::differences(log, unit, true), QString());
        QVERIFY(logcheck::differences(log, {}, true).contains("component 2 "));
        QVERIFY(logcheck::differences(log, unit, false).contains("component 18 "));
    }
};

QTEST_GUILESS_MAIN(TestLogCheck)
#include "test_logcheck.moc"
