// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/reportcounter.h"
#include "yield/figures/timeline.h"

#include <QTest>

/// What the plants of model.py are too small for.
class TestFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void limits()
    {
        // Units, passed of all, low and high by scipy's binom.
        const QVector<QVector<int>> rows{{30, 950, 1000, 24, 30}, {1, 1, 2, 0, 1},
                                         {5, 0, 7, 0, 0},         {5, 7, 7, 5, 5},
                                         {741, 1, 2, 330, 411},   {100000, 999, 1000, 99869, 99929},
                                         {0, 1, 2, 0, 0},         {100000, 1, 100000, 0, 5}};
        for (const auto& row : rows) {
            const Limits limits = limitsOf(row[0], {row[2], 0, row[1], 0, 0});
            QCOMPARE(QVector<int>({row[0], row[1], row[2], limits.low, limits.high}), row);
        }
    }

    /// The lists end where they are of no more use; what is counted goes on.
    void longLists()
    {
        constexpr int units = 30000;
        ReportRequest request;
        request.now = QDateTime({2026, 11, 21}, {15, 0});
        request.station = "one";
        request.lastLogs = {{"one", {}}, {"two", {}}};
        ReportCounter counter(request);
        const BandMarks marks = ~BandMarks() >> 1; // misses the last band
        for (int i = 0; i < units; ++i)
            for (int attempt = 0; attempt <= i % 3; ++attempt) {
                const auto time = request.now.addSecs(60 * (i % 1000 - 2000 + attempt));
                counter.add(
                    {"one", true, QString::number(units + i), time.toString(Qt::ISODate), marks});
            }
        const Report report = counter.finish();
        QCOMPARE(report.request.lastLogs.size(), std::size_t{1});
        QCOMPARE(report.total.attempts, 2 * units);
        QCOMPARE(report.openUnits.size(), Report::maxOpenUnits);
        QCOMPARE(report.openUnits.first().last.serial, QString("32999"));
        QCOMPARE(report.repeatedUnitCount, units / 3 * 2);
        QCOMPARE(report.repeatedUnits.size(), Report::maxRepeatedUnits);
        QCOMPARE(report.repeatedUnits.first().last.serial, QString("32999"));
        QCOMPARE(report.repeatedUnits.last().attempts, 3);
    }

    void longTimesAreWeeksOrMonths()
    {
        QStringList found;
        for (const int days : {69, 70, 489, 490}) {
            const QDate begin(2025, 12, 31); // a Wednesday
            const auto timeline = timelineOf({{begin, Tally()}, {begin.addDays(days), Tally()}});
            found << QString("%1 %2s").arg(timeline.length).arg(timeline.unit);
        }
        QCOMPARE(found, QStringList({"70 days", "11 weeks", "71 weeks", "18 months"}));
    }
};

QTEST_GUILESS_MAIN(TestFigures)
#include "test_figures.moc"
