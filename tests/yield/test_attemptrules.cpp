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
    void savedAgain_data()
    {
        QTest::addColumn<QString>("latest");
        QTest::addColumn<QString>("later");
        QTest::addColumn<int>("seconds"); // between them
        QTest::addColumn<bool>("isSavedAgain");
        const auto row = [](const char* name, const char* latest, const char* later, int seconds,
                            bool isSavedAgain) {
            QTest::newRow(name) << latest << later << seconds << isSavedAgain;
        };
        row("nothing changed", "whole", "whole", 60, true);
        row("good once more", "whole", "whole", 61, false);
        row("dead tail twice", "to20", "to20", 1801, false);
        row("saved in mid-run", "to20", "whole", 1800, true);
        row("saved in mid-control", "to21-20.1", "whole", 300, true);
        row("saved in mid-run, then a miss", "to2", "whole-3.5", 300, true);
        row("fewer marks", "whole", "to20", 30, false);
        row("other marks", "whole-3.5", "whole-43.12", 30, false);
        row("as many marks in one second", "whole-0.0", "whole-0.1", 0, false);
        row("repaired and tested again", "whole-3.5", "whole", 30, false);
        row("skipped, then saved in mid-run", "to20-3.5", "whole-3.5", 300, true);
        row("begun again after a miss", "to20-3.5", "whole", 300, false);
        row("last control repaired", "whole-43.12", "whole", 61, false);
        row("saved in the last control", "whole-43.12", "whole", 60, true);
    }

    void savedAgain()
    {
        QFETCH(QString, latest);
        QFETCH(QString, later);
        QFETCH(int, seconds);
        QFETCH(bool, isSavedAgain);
        const auto attempts =
            attemptrules::attemptsOf({log("", 0, latest), log("", seconds, later)});
        QCOMPARE(attempts.size(), isSavedAgain ? 1U : 2U);
        QVERIFY(attemptrules::attemptsOf({log("", seconds, later), log("", 0, latest)}) ==
                attempts);
    }

    /// The half hour counts from the latest log, an equal one too, and the date is that of the
    /// first log with all the marks. Whatever the order of the logs.
    void longRun()
    {
        std::vector<std::pair<int, QString>> saves{
            {0, "to9"}, {1500, "to9"}, {3000, "to20"}, {4500, "to20"}, {6400, "whole"}};
        do {
            std::vector<StationLog> logs;
            std::transform(saves.begin(), saves.end(), std::back_inserter(logs),
                           [](const auto& save) { return log("", save.first, save.second); });
            QVERIFY(attemptrules::attemptsOf(logs) ==
                    std::vector({log("", 3000, "to20"), log("", 6400, "whole")}));
        } while (std::next_permutation(saves.begin(), saves.end()));
    }

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
