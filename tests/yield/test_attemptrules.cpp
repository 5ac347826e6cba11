// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include "tests/yield/unitlogs.h"

#include <QTest>

#include <algorithm>
#include <iterator>

using unitlogs::log;

/// Marks are as unitlogs::marks has them.
class TestAttemptRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outcome_data()
    {
        QTest::addColumn<QString>("marks");
        QTest::addColumn<bool>("tests18");
        QTest::addColumn<QString>("outcome");
        const auto row = [](const char* name, const char* marks, bool tests18,
                            const char* outcome) {
            QTest::newRow(name) << marks << tests18 << outcome;
        };
        row("whole", "whole", false, "");
        row("18 missed", "whole", true, "18.0 18.1");
        row("bands", "all-8.12-40.0", true, "8.12 40.0");
        row("last half worked", "all-43.1-43.12", true, "43.1 43.12");
        row("last dead", "all-43", true,
            "43.0 43.1 43.2 43.3 43.4 43.5 43.6 43.7 43.8 43.9 43.10 43.11 43.12");
        row("two at the end", "all-42-43", true, "ended at 42");
        row("a board of rotaries", "all-40-41-42-43", true, "ended at 40");
        row("from 18, tested", "to18", true, "ended at 18");
        row("from 18, not tested", "to18", false, "ended at 19");
        row("begun, then ended", "to12-3.4-11.1", false, "3.4 11.1 ended at 12");
        row("two dead, not at the end", "all-30-31", true, "30.0 30.1 31.0 31.1");
        row("18 alone, which is not tested", "18", false, "ended at 0");
    }

    void outcome()
    {
        QFETCH(QString, marks);
        QFETCH(bool, tests18);
        QFETCH(QString, outcome);
        const auto found = attemptrules::outcomeOf(unitlogs::marks(marks), tests18);
        QStringList words;
        for (const auto& band : found.missed)
            words << QString("%1.%2").arg(band.componentNum).arg(band.band);
        if (found.abortedAt)
            words << QString("ended at %1").arg(*found.abortedAt);
        QCOMPARE(words.join(' '), outcome);
        QCOMPARE(found.hasPassed(), outcome.isEmpty());
    }

    void clocksGoForward()
    {
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        QCOMPARE(attemptrules::secondsBetween("2026-03-29T01:59:00", "2026-03-29T03:01:00"), 3720);
    }
};

QTEST_GUILESS_MAIN(TestAttemptRules)
#include "test_attemptrules.moc"
