// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/cells.h"
#include "yield/page/page.h"

#include <QRegularExpression>
#include <QTest>

namespace
{
Attempt attempt(const QString& serial, const std::initializer_list<bandmarks::Band>& missed)
{
    Attempt attempt{"One", true, serial, "2026-11-18T07:15:59", ~BandMarks() >> 26};
    for (const auto& band : missed)
        attempt.marks.reset(bandmarks::markIndex(band.componentNum, band.band));
    return attempt;
}

/// Figures that differ from each other.
Report report()
{
    Report report;
    report.request.now = QDateTime({2026, 11, 18}, {8, 0});
    report.request.lastLogs = {{"One", "2026-11-17T08:00:00"},   {"Two", "2026-11-17T07:59:59"},
                               {"Three", "2026-11-18T06:00:00"}, {"Four", "2026-11-18T06:00:01"},
                               {"Five", "2026-11-16T08:00:00"},  {"Six", {}}};
    report.total = {12000, 14000, 10800, 6900, 120};
    report.days[{2026, 11, 17}] = {12000, 14000, 10800, 6900, 120};
    report.falseFailures = {40, 10};
    report.testTimes = {77, 3755.4};
    report.attemptsByNumber = {{12000, 10800, 120}};
    report.stations["One"] = {"One", {300, 350, 150, 280, 30}, {2, 155}};
    report.stations["One"].failed[3] = 1;
    for (int c = 0; c < 44; ++c)
        report.controls.append({c, c == 39 ? 0 : 200, 0, QVector<int>(bandmarks::bandCount(c)), 0});
    report.controls[3].failed = 30;
    report.controls[3].missedBands[12] = 30;
    report.controls[9].failed = 10;
    report.controls[9].missedBands[1] = 10;
    report.controls[5].aborted = 30;
    const Attempt open = attempt(
        "open", {{3, 0}, {3, 1}, {3, 5}, {3, 11}, {3, 12}, {9, 1}, {10, 0}, {10, 1}, {11, 0}});
    Attempt first = attempt("again\uffff<", {});
    first.marks = ~BandMarks();
    Attempt last = first;
    last.testedAt = "2026-11-18T07:20:00";
    last.station = "Two";
    last.marks.reset(0);
    report.notPassedUnits = {{open, open, 1234}};
    report.retestedUnits = {{first, last, 5678}};
    report.retestedUnitCount = 2200;
    return report;
}

/// The texts of a page, a stroke where elements begin and end.
QString textOf(const Report& report)
{
    return QString::fromUtf8(reportPage(report))
        .replace(QRegularExpression("\\s*<[^>]*>[\\s|]*"), "|")
        .replace(QRegularExpression("\\|+"), "|")
        .replace(QChar::Nbsp, ' ');
}
} // namespace

/// The words of the page, and the texts of figures; pagecheck.js checks its charts.
class TestPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data()
    {
        const QString yields = "First-pass yield|Control limits|Final yield so far|Aborted|";
        const QString day = "90.0 % (10,800 of 12,000)|within 89.2 % to 90.8 %|57.5 % (6,900 of "
                            "12,000)|120|";
        const QStringList parts{
            "|Status|Not passed|Totals|Trend|Stations|Heat map|Pareto|Bands|Aborted|Retests|"
            "Retested|Definitions|Needs attention|",
            "|Station|Last log|Age|One|Tue 17 Nov 08:00|24 hours|Two|no log since Tue 17 Nov 07:59|"
            "24 hours|Three|Wed 18 Nov 06:00|2 hours|Four|Wed 18 Nov 06:00|119 min|"
            "Five|no log since Mon 16 Nov 08:00|2 days|Six|no log yet|–|",
            "|First tested|Units|" + yields + "Today so far, Wed 18 Nov 2026|0|–|–|–|–|" +
                "Yesterday, Tue 17 Nov 2026|12,000|" + day + "Mon 16 Nov 2026|0|",
            "|Units not yet passed|5,100 units whose last attempt did not pass, newest first.|",
            "|Serial number|Last tested|Station|Attempts|Failures of the last attempt|open|"
            "2026-11-18 07:15|One|1,234|aborted at Rotary 2; Fader 3: 0 to 19, 50 to 59, 110 to "
            "127; Button 0: pressed; Button 1: all; and 1 more|And 5,099 more;",
            "|Totals|Units|12,000|Attempts|14,000|First-pass yield|90.0 %|10,800 of 12,000|"
            "Final yield so far|57.5 %|6,900 of 12,000|Aborted|1.0 %|120 of 12,000|"
            "False failures|25.0 %|10 of 40|Median test time|1 h 2 min 35 s|77 attempts|",
            "|Tuesday, 17 Nov 2026: 12,000 units, first-pass yield 90.0 % (10,800 of 12,000)|",
            "|Data|First tested|Units|" + yields + "Tuesday, 17 Nov 2026|12,000|" + day,
            "|Station|Units|Attempts|" + yields +
                "Median test time|Top failure|One|300|350|"
                "50.0 % (150 of 300)|▼ below LCL, 84.3 % to 94.7 %|93.3 % (280 of 300)|30|"
                "2 min 35 s (2 attempts)|Fader 3, 1 unit|Failures on the control surface|",
            "|Data|Control|Failed units|Fader 0 (component 0)|0 % (0 of 200)|",
            "|Button 30 (component 39)|never tested|",
            "|Data|Control|Failed units|Share|Cumulative|Fader 3 (component 3)|15.0 % (30 of 200)|"
            "75.0 %|75.0 %|Button 0 (component 9)|5.0 % (10 of 200)|25.0 %|100 %|",
            "|Missed bands of the top three controls|",
            "|Data|Control|Band|Failed units|Fader 3 (component 3)|0 to 9|0|",
            "|Button 0 (component 9)|released|0|Button 0 (component 9)|pressed|10|",
            "|Aborted first attempts: 1.0 % (120 of 12,000).|Aborted at|First attempts|"
            "Fader 5 (component 5)|25.0 % (30 of 120)|Yield by attempt, and false failures|",
            "|Attempt|Attempts|Passed|Aborted|1|12,000|90.0 % (10,800 of 12,000)|120|",
            "at the same station: 25.0 % (10 of 40).|",
            "|Retested units|2,200 units, most attempts first.|Serial number|Attempts|First "
            "attempt|"
            "First station|First result|Last attempt|Last station|Last result|again\ufffd&lt;|"
            "5,678|2026-11-18 07:15|One|passed|2026-11-18 07:20|Two|failed|And 2,199 more;",
            "|Definitions|Units|Serial numbers, as typed",
        };
        QTest::addColumn<QString>("part");
        for (const QString& part : parts)
            QTest::newRow(qPrintable(part.left(60))) << part;
    }

    void texts()
    {
        QFETCH(QString, part);
        const QString text = textOf(report());
        QVERIFY2(text.contains(part), qPrintable(part + "\nis not in\n" + text));
    }

    void scope()
    {
        Report empty;
        empty.request.now = QDateTime({2026, 11, 18}, {8, 0});
        QVERIFY(textOf(empty).contains("|Units first tested at any time, at all stations. Made on "
                                       "2026-11-18 08:00.|Needs attention|"));
        QVERIFY(textOf(empty).contains("|There are no such units in the database."));
        Report report = ::report();
        report.request.since = QDate(2026, 11, 1);
        report.request.until = QDate(2026, 11, 2);
        report.request.station = "A";
        report.request.exclude = QStringList{"K*", "L"};
        report.excluded = 1;
        report.implausibleDates.units = 1;
        const QString text = textOf(report);
        QVERIFY(text.contains("|Units first tested from 2026-11-01 to 2026-11-02, at station "
                              "&quot;A&quot;, excluding K*, L: 1 unit excluded. Made on"));
        QVERIFY(text.contains("|1 unit with a first attempt before the year 2000"));
    }

    /// Only all are 100 %, and only none 0 %.
    void percentages()
    {
        QCOMPARE(cells::percentText(99999, 100000), QString("99.9\u00a0%"));
        QCOMPARE(cells::percentText(1, 100000), QString("0.1\u00a0%"));
        QCOMPARE(cells::share(1234, 1234).fullText(), QString("100\u00a0% (1,234 of 1,234)"));
    }
};

QTEST_GUILESS_MAIN(TestPage)
#include "test_page.moc"
