// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"
#include "yield/figures/timeline.h"

#include <QTest>

namespace
{
BandMarks passed()
{
    return ~BandMarks();
}

BandMarks missing(int componentNum, int band)
{
    return passed().reset(bandmarks::markIndex(componentNum, band));
}

BandMarks abortedAt(int componentNum)
{
    return passed() >> (passed().size() - bandmarks::markIndex(componentNum, 0));
}

/// time: of 18 November 2026.
Attempt attempt(const QString& serial, const QString& time, const BandMarks& marks,
                const QString& station = "One")
{
    return {station, true, serial, "2026-11-18T" + time, marks};
}

Report reportOf(const QVector<Attempt>& attempts, ReportRequest request = {})
{
    request.now = QDateTime({2026, 11, 21}, {15, 0});
    ReportCounter counter(request);
    std::for_each(attempts.begin(), attempts.end(), [&](const auto& each) { counter.add(each); });
    return counter.finish();
}

using Numbers = QVector<int>;

Numbers numbers(const Tally& tally)
{
    return {tally.units, tally.attempts, tally.passedFirst, tally.passedLast, tally.abortedFirst};
}
} // namespace

Q_DECLARE_METATYPE(QVector<Attempt>)

/// Cases counted by hand; model.py has random ones.
class TestFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void line()
    {
        const Report report =
            reportOf({attempt("A", "08:00:00", passed()), attempt("B", "08:00:00", missing(3, 12)),
                      attempt("B", "09:00:00", passed(), "Two"),
                      attempt("C", "08:10:00", abortedAt(5), "Two"),
                      attempt("C", "08:20:00", missing(3, 0), "Two"),
                      attempt("D", "08:30:00", passed()), attempt("D", "08:40:00", abortedAt(9))});
        QCOMPARE(numbers(report.days.value({2026, 11, 18})), Numbers({4, 7, 2, 2, 1}));
        QCOMPARE(numbers(report.stations["One"].tally), Numbers({3, 5, 2, 2, 0}));
        const ControlFailures& third = report.controls[3];
        QCOMPARE(Numbers({third.units, third.failed, third.missedBands.last()}),
                 Numbers({4, 1, 1}));
        const ControlFailures& fifth = report.controls[5];
        QCOMPARE(Numbers({fifth.units, fifth.failed, fifth.aborted}), Numbers({3, 0, 1}));
        const AttemptsByNumber second = report.attemptsByNumber[1];
        QCOMPARE(Numbers({second.attempts, second.passed, second.aborted}), Numbers({3, 1, 1}));
    }

    void falseFailures_data()
    {
        QTest::addColumn<QVector<Attempt>>("later");
        QTest::addColumn<Numbers>("failedAndPassedNext");
        const Attempt again = attempt("A", "08:10:00", passed());
        const auto row = [](const char* name, const QVector<Attempt>& later, const Numbers& found) {
            QTest::newRow(name) << later << found;
        };
        row("within an hour", {attempt("A", "09:00:00", passed())}, {1, 1});
        row("later", {attempt("A", "09:00:01", passed())}, {1, 0});
        row("at another station", {attempt("A", "08:05:00", passed(), "Two")}, {1, 0});
        row("after an aborted one", {attempt("A", "08:05:00", abortedAt(9)), again}, {1, 1});
        row("after two failures", {attempt("A", "08:05:00", missing(3, 0)), again}, {2, 1});
        row("another unit", {attempt("B", "08:05:00", passed())}, {1, 0});
    }

    void falseFailures()
    {
        QFETCH(QVector<Attempt>, later);
        later.prepend(attempt("A", "08:00:00", missing(3, 0)));
        const Report found = reportOf(later);
        QTEST(Numbers({found.failedAttempts, found.falseFailures}), "failedAndPassedNext");
    }

    void testTimes()
    {
        Attempt timed = attempt("A", "08:02:00", passed());
        QVector<Attempt> attempts{timed};
        for (const QString start : {"18T08:00:00.500", "18T08:01:00.000", "18T08:02:00.500",
                                    "17T08:02:00.000", "17T08:01:59.999", "18T07:58:00.000"}) {
            timed.startedAt = "2026-11-" + start;
            attempts.append(timed);
        }
        attempts.last().station = "Two"; // 240 s
        timed.marks = missing(3, 0);
        attempts.append(timed);
        const Report report = reportOf(attempts);
        QCOMPARE(report.testTimes.attempts, 4); // 60, 119.5, 240 and 86,400 s
        QCOMPARE(*report.testTimes.medianSeconds, 179.75);
        QCOMPARE(report.stations["One"].testTimes.attempts, 3);
        QCOMPARE(*report.stations["One"].testTimes.medianSeconds, 119.5);
        QVERIFY(!reportOf(attempts.mid(0, 1)).testTimes.medianSeconds);
    }

    void limits()
    {
        // Units, passed of all, lower and upper by scipy's binom.
        const QVector<Numbers> rows{{30, 950, 1000, 24, 30}, {1, 1, 2, 0, 1},
                                    {5, 0, 7, 0, 0},         {5, 7, 7, 5, 5},
                                    {741, 1, 2, 330, 411},   {100000, 999, 1000, 99869, 99929},
                                    {0, 1, 2, 0, 0},         {100000, 1, 100000, 0, 5}};
        for (const Numbers& row : rows) {
            const ControlLimits limits = controlLimits(row[0], {row[2], 0, row[1], 0, 0});
            QCOMPARE(Numbers({row[0], row[1], row[2], limits.lower, limits.upper}), row);
        }
    }

    /// The lists end where they are of no more use; what is counted goes on.
    void longLists()
    {
        constexpr int units = 30000;
        QVector<Attempt> attempts;
        for (int i = 0; i < units; ++i)
            for (int number = 0; number <= i % 3; ++number)
                attempts.append(attempt(QString::number(units + i),
                                        QTime(0, 0).addSecs(60 * (i % 1000 + number)).toString(),
                                        missing(43, 12)));
        ReportRequest request;
        request.station = "One";
        request.lastLogs = {{"One", {}}, {"Two", {}}};
        const Report report = reportOf(attempts, request);
        QCOMPARE(report.request.lastLogs.size(), std::size_t{1});
        QCOMPARE(report.total.attempts, 2 * units);
        QCOMPARE(report.notPassedUnits.size(), std::size_t{Report::maxNotPassedUnits});
        QCOMPARE(report.notPassedUnits.begin()->last.serial, QString("32999"));
        QCOMPARE(report.retestedUnitCount, units / 3 * 2);
        QCOMPARE(report.retestedUnits.size(), std::size_t{Report::maxRetestedUnits});
        QCOMPARE(report.retestedUnits.begin()->last.serial, QString("32999"));
        QCOMPARE(report.retestedUnits.rbegin()->attempts, 3);
    }

    void longTimesAreWeeksOrMonths()
    {
        QStringList found;
        for (const int days : {69, 70, 489, 490}) {
            const QDate begin(2025, 12, 31); // a Wednesday
            const auto timeline = timelineOf({{begin, Tally()}, {begin.addDays(days), Tally()}});
            found << QString("%1 %2s").arg(timeline.periods.last().slot + 1).arg(timeline.period);
        }
        QCOMPARE(found, QStringList({"70 days", "11 weeks", "71 weeks", "18 months"}));
    }
};

QTEST_GUILESS_MAIN(TestFigures)
#include "test_figures.moc"
