// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/unitlogs.h"
#include "yield/logs/attemptrules.h"

#include <QTest>

#include <utility>

namespace
{
using Bands = QVector<std::pair<int, int>>;

Bands allBands(std::initializer_list<int> controls)
{
    Bands bands;
    for (const int componentNum : controls)
        for (int band = 0; band < bandmarks::bandCount(componentNum); ++band)
            bands.append({componentNum, band});
    return bands;
}
} // namespace

class TestAttemptRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outcome_data()
    {
        QTest::addColumn<BandMarks>("marks");
        QTest::addColumn<bool>("tests18");
        QTest::addColumn<Bands>("missed");
        QTest::addColumn<int>("abortedAt"); // -1: not aborted
        using namespace unitlogs;
        const BandMarks all = passedWith18();
        const auto row = [](const char* name, const BandMarks& marks, bool tests18,
                            const Bands& missed, int abortedAt = -1) {
            QTest::newRow(name) << marks << tests18 << missed << abortedAt;
        };
        row("passed", passed(), false, {});
        row("passed with 18", all, true, {});
        row("18 missed", passed(), true, {{18, 0}, {18, 1}});
        row("two bands", without(without(all, 8, 12), 40, 0), true, {{8, 12}, {40, 0}});
        row("last control begun", without(all, 43, 12), true, {{43, 12}});
        row("last control dead", without(all, 43), true, allBands({43}));
        row("last two controls", without(without(all, 42), 43), true, {}, 42);
        row("no rotary board", abortedAt(40), false, {}, 40);
        row("aborted at 18", abortedAt(18), true, {}, 18);
        row("aborted behind the untested 18", abortedAt(18), false, {}, 19);
        row("aborted behind the power button", abortedAt(39), false, {}, 40);
        row("missed, then aborted", without(without(abortedAt(12), 3, 4), 11, 1), false,
            {{3, 4}, {11, 1}}, 12);
        row("two dead controls, not the last", without(without(all, 30), 31), true,
            allBands({30, 31}));
        row("marks of the untested 18 alone", all & ~passed(), false, {}, 0);
    }

    void outcome()
    {
        QFETCH(BandMarks, marks);
        QFETCH(bool, tests18);
        QFETCH(Bands, missed);
        QFETCH(int, abortedAt);
        const auto found = attemptrules::outcomeOf(marks, tests18);
        Bands foundBands;
        for (const auto& band : found.missed)
            foundBands.append({band.componentNum, band.band});
        QCOMPARE(foundBands, missed);
        QCOMPARE(found.abortedAt.value_or(-1), abortedAt);
        QCOMPARE(found.hasPassed(), missed.isEmpty() && abortedAt < 0);
    }
};

QTEST_GUILESS_MAIN(TestAttemptRules)
#include "test_attemptrules.moc"
