// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include "tests/yield/unitlogs.h"

#include <QTest>

#include <algorithm>
#include <numeric>

Q_DECLARE_METATYPE(BandMarks)

class TestAttemptRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savedAgain_data()
    {
        QTest::addColumn<BandMarks>("latest");
        QTest::addColumn<BandMarks>("later");
        QTest::addColumn<int>("seconds"); // between them
        QTest::addColumn<bool>("isSavedAgain");
        const BandMarks whole = unitlogs::whole();
        const BandMarks without3 = unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}});
        const BandMarks halfOf20 = unitlogs::upTo(21) & unitlogs::allBut({{20, 1}});
        const BandMarks withoutLast = unitlogs::allBut({{18, 0}, {18, 1}, {43, 12}});
        constexpr int halfAnHour = 1800;
        QTest::newRow("nothing changed") << whole << whole << 60 << true;
        QTest::newRow("good once more") << whole << whole << 61 << false;
        QTest::newRow("broken off, saved twice")
            << unitlogs::upTo(20) << unitlogs::upTo(20) << halfAnHour << true;
        QTest::newRow("dead tail twice")
            << unitlogs::upTo(20) << unitlogs::upTo(20) << halfAnHour + 1 << false;
        QTest::newRow("saved in mid-run") << unitlogs::upTo(20) << whole << halfAnHour << true;
        QTest::newRow("tail repaired") << unitlogs::upTo(20) << whole << halfAnHour + 1 << false;
        QTest::newRow("saved in mid-control") << halfOf20 << whole << 300 << true;
        QTest::newRow("saved in mid-run, then a miss")
            << unitlogs::upTo(2) << without3 << 300 << true;
        QTest::newRow("fewer marks") << whole << unitlogs::upTo(20) << 30 << false;
        QTest::newRow("other marks") << without3 << withoutLast << 30 << false;
        QTest::newRow("repaired and tested again") << without3 << whole << 30 << false;
        QTest::newRow("skipped, then saved in mid-run")
            << (unitlogs::upTo(20) & without3) << without3 << 300 << true;
        QTest::newRow("begun again after a miss")
            << (unitlogs::upTo(20) & without3) << whole << 300 << false;
        QTest::newRow("last control repaired") << withoutLast << whole << 61 << false;
        QTest::newRow("saved in the last control") << withoutLast << whole << 60 << true;
    }

    void savedAgain()
    {
        QFETCH(BandMarks, latest);
        QFETCH(BandMarks, later);
        QFETCH(int, seconds);
        QFETCH(bool, isSavedAgain);
        const auto attempts = attemptrules::attemptsOf({save(seconds, later), save(0, latest)});
        QCOMPARE(attempts.size() == 1, isSavedAgain);
    }

    /// The half hour counts from the latest log, an equal one too, and the date is that of the
    /// first log with all the marks. Whatever the order of the logs.
    void longRun()
    {
        const std::vector<StationLog> logs = {
            save(0, unitlogs::upTo(9)),     save(1500, unitlogs::upTo(9)),
            save(3000, unitlogs::upTo(20)), save(4500, unitlogs::upTo(20)),
            save(6400, unitlogs::whole()),
        };
        const std::vector<StationLog> attempts = {logs[2], logs[4]};
        std::vector<std::size_t> order(logs.size());
        std::iota(order.begin(), order.end(), 0);
        do {
            std::vector<StationLog> shuffled(logs.size());
            for (std::size_t i = 0; i < logs.size(); ++i)
                shuffled[order[i]] = logs[i];
            QVERIFY(attemptrules::attemptsOf(shuffled) == attempts);
        } while (std::next_permutation(order.begin(), order.end()));
    }

    void outcome_data()
    {
        QTest::addColumn<BandMarks>("marks");
        QTest::addColumn<bool>("tests18");
        QTest::addColumn<QString>("outcome");
        const auto dead = [](int first, int last) {
            BandMarks marks = ~BandMarks();
            for (auto mark = bandmarks::markIndex(first, 0);
                 mark < static_cast<std::size_t>(bandmarks::firstMark(last + 1)); ++mark)
                marks.reset(mark);
            return marks;
        };
        QTest::newRow("whole") << unitlogs::whole() << false << "";
        QTest::newRow("18 missed") << unitlogs::whole() << true << "18.0 18.1";
        QTest::newRow("bands") << unitlogs::allBut({{8, 12}, {40, 0}}) << true << "8.12 40.0";
        QTest::newRow("last half worked")
            << unitlogs::allBut({{43, 1}, {43, 12}}) << true << "43.1 43.12";
        QTest::newRow("last dead") << dead(43, 43) << true
                                   << "43.0 43.1 43.2 43.3 43.4 43.5 43.6 43.7 43.8 43.9 43.10 "
                                      "43.11 43.12";
        QTest::newRow("two at the end") << dead(42, 43) << true << "ended at 42";
        QTest::newRow("a board of rotaries") << dead(39, 43) << true << "ended at 40";
        QTest::newRow("from 18, tested") << dead(18, 43) << true << "ended at 18";
        QTest::newRow("from 18, not tested") << dead(18, 43) << false << "ended at 19";
        QTest::newRow("begun, then ended") << (dead(12, 43) & unitlogs::allBut({{3, 4}, {11, 1}}))
                                           << false << "3.4 11.1 ended at 12";
        QTest::newRow("two dead, not at the end") << dead(30, 31) << true << "30.0 30.1 31.0 31.1";
        QTest::newRow("18 alone, which is not tested")
            << (dead(0, 17) & dead(19, 43)) << false << "ended at 0";
    }

    void outcome()
    {
        QFETCH(BandMarks, marks);
        QFETCH(bool, tests18);
        QFETCH(QString, outcome);
        const auto found = attemptrules::outcomeOf(marks, tests18);
        QStringList words;
        for (const auto& band : found.missed)
            words << QStringLiteral("%1.%2").arg(band.componentNum).arg(band.band);
        if (found.endedAt)
            words << QStringLiteral("ended at %1").arg(*found.endedAt);
        QCOMPARE(words.join(' '), outcome);
        QCOMPARE(found.isComplete(), outcome.isEmpty());
    }

    void clocksGoForward()
    {
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        QCOMPARE(attemptrules::secondsBetween("2026-03-29T01:59:00", "2026-03-29T03:01:00"), 3720);
    }

    void order()
    {
        const auto attempt = [](const char* time, const QString& station, const BandMarks& marks) {
            return Attempt{station, false, {}, QString("2026-11-21T%1").arg(time), marks};
        };
        const std::vector<Attempt> inOrder = {
            attempt("11:59:59", "Z", unitlogs::whole()),
            attempt("12:00:00", "A", unitlogs::whole()),
            attempt("12:00:00", "\uffff", unitlogs::whole()), // by bytes, not as QString has it
            attempt("12:00:00", "\U0001f600", unitlogs::upTo(20)),
            attempt("12:00:00", "\U0001f600", unitlogs::whole() & unitlogs::allBut({{0, 1}})),
            attempt("12:00:00", "\U0001f600", unitlogs::whole() & unitlogs::allBut({{0, 0}})),
            attempt("12:00:00", "\U0001f600", unitlogs::whole()),
        };
        for (std::size_t i = 0; i < inOrder.size(); ++i)
            for (std::size_t j = 0; j < inOrder.size(); ++j)
                QCOMPARE(attemptrules::isBefore(inOrder[i], inOrder[j]), i < j);
    }

private:
    static StationLog save(int seconds, const BandMarks& marks)
    {
        return {{}, unitlogs::noon().addSecs(seconds).toString(Qt::ISODate), marks};
    }
};

QTEST_GUILESS_MAIN(TestAttemptRules)
#include "test_attemptrules.moc"
