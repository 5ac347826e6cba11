// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include "tests/yield/unitlogs.h"

#include <QTest>

Q_DECLARE_METATYPE(BandMarks)

class TestAttemptRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void savedAgain_data()
    {
        QTest::addColumn<BandMarks>("earlier");
        QTest::addColumn<BandMarks>("later");
        QTest::addColumn<int>("seconds"); // between them
        QTest::addColumn<bool>("isSavedAgain");
        const BandMarks whole = unitlogs::whole();
        const BandMarks without3 = unitlogs::allBut({{3, 5}, {18, 0}, {18, 1}});
        const BandMarks halfOf20 = unitlogs::upTo(21) & unitlogs::allBut({{20, 1}});
        const BandMarks withoutLast = unitlogs::allBut({{18, 0}, {18, 1}, {43, 12}});
        constexpr int day = 86400;
        QTest::newRow("nothing changed") << whole << whole << 1 << true;
        QTest::newRow("saved in mid-run") << unitlogs::upTo(20) << whole << 300 << true;
        QTest::newRow("saved in mid-control") << halfOf20 << whole << 300 << true;
        QTest::newRow("saved in mid-run, then a miss")
            << unitlogs::upTo(2) << without3 << 300 << true;
        QTest::newRow("fewer marks") << whole << unitlogs::upTo(20) << 300 << false;
        QTest::newRow("other marks") << without3 << withoutLast << 300 << false;
        QTest::newRow("repaired and tested again") << without3 << whole << day << false;
        QTest::newRow("skipped, then saved in mid-run")
            << (unitlogs::upTo(20) & without3) << without3 << 300 << true;
        QTest::newRow("begun again after a miss")
            << (unitlogs::upTo(20) & without3) << whole << 300 << false;
        QTest::newRow("last control repaired") << withoutLast << whole << day << false;
        QTest::newRow("saved in the last control") << withoutLast << whole << 5 << true;
    }

    void savedAgain()
    {
        QFETCH(BandMarks, earlier);
        QFETCH(BandMarks, later);
        QFETCH(int, seconds);
        QFETCH(bool, isSavedAgain);
        const auto time = [](int s) { return unitlogs::noon().addSecs(s).toString(Qt::ISODate); };
        QCOMPARE(attemptrules::isSavedAgain({time(0), earlier}, {time(seconds), later}),
                 isSavedAgain);
    }

    void whatCounts()
    {
        QVERIFY(!attemptrules::isAttempt({}));
        QVERIFY(attemptrules::outcomeOf(unitlogs::whole(), false).isComplete());
        QCOMPARE(attemptrules::outcomeOf(unitlogs::whole(), true).missed.size(), std::size_t(2));
        const auto missed =
            attemptrules::outcomeOf(unitlogs::allBut({{8, 12}, {40, 0}}), true).missed;
        QCOMPARE(missed.size(), std::size_t(2));
        QCOMPARE(missed[0].componentNum, 8);
        QCOMPARE(missed[0].band, 12);
        QCOMPARE(missed[1].componentNum, 40);
        QCOMPARE(missed[1].band, 0);
        // Component 39 has no marks that could be missed.
        for (const auto& band : attemptrules::outcomeOf({}, true).missed)
            QVERIFY(band.componentNum != roster::powerButton);
    }
};

QTEST_GUILESS_MAIN(TestAttemptRules)
#include "test_attemptrules.moc"
