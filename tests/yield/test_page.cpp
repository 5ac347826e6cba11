// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include <QRegularExpression>
#include <QTest>

namespace
{
/// Figures of which only all are 100 %, and only none 0 %; an attempt aborted at Rotary 2 that
/// failed before.
Report report()
{
    Report report;
    report.request.now = QDateTime({2026, 11, 18}, {8, 0});
    report.request.lastLogs = {{"One", "2026-11-17T08:00:00"},
                               {"Two", "2026-11-17T07:59:59"},
                               {"Three", "2026-11-18T06:00:01"},
                               {"Four", {}}};
    report.total = {12000, 14000, 10800, 11997, 1};
    report.implausibleDates = 1;
    report.days[{2026, 11, 17}] = report.total;
    report.failedAttempts = 40;
    report.falseFailures = 10;
    report.testTimes = {77, 3755.4};
    report.stations["One"].tally = {300, 350, 150, 300, 30};
    report.stations["One"].testTimes = {2, 155};
    report.stations["One"].failed[3] = 1;
    report.controls.fill({}, roster::componentCount);
    Attempt first{"One", true, "again\uffff<", "2026-11-18T07:15:59", ~BandMarks()};
    Attempt last = first;
    last.station = "Two";
    last.marks >>= 26;
    for (const bandmarks::Band& band : std::initializer_list<bandmarks::Band>{
             {3, 0}, {3, 1}, {3, 5}, {3, 11}, {3, 12}, {9, 1}, {10, 0}, {10, 1}, {11, 0}})
        last.marks.reset(bandmarks::markIndex(band.componentNum, band.band));
    report.notPassedUnits.insert({last.testedAt, {first, last, 1234}});
    report.retestedUnits.insert({{5678, last.testedAt}, {first, last, 5678}});
    report.retestedUnitCount = 2200;
    return report;
}

/// The texts of a page, a stroke where elements begin and end.
QString textOf(const Report& report)
{
    return QString::fromUtf8(reportPage(report))
        .section("</style>", 1)
        .simplified()
        .remove(QRegularExpression("<p[^>]* hidden=[^>]*>.*</p>",
                                   QRegularExpression::InvertedGreedinessOption))
        .replace(QRegularExpression("\\s*<[^>]*>[\\s|]*"), "|")
        .replace(QRegularExpression("\\|+"), "|");
}
} // namespace

/// The texts of figures; pagecheck.js checks the charts, model.py the figures.
class TestPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts()
    {
        const QString yields = "|First-pass yield|Control limits|Final yield so far|Aborted|";
        const QString again =
            "|again\ufffd&lt;|2026-11-18 07:15|Two|1,234|aborted at Rotary 2; Fader 3: 0 to 19, "
            "50 to 59, 110 to 127; Button 0: pressed; Button 1: all; and 1 more|";
        const QString totals =
            "|Units|12,000|Attempts|14,000|First-pass yield|90.0 %|10,800 of 12,000|"
            "Final yield so far|99.9 %|11,997 of 12,000|Aborted|0.1 %|1 of 12,000|"
            "False failures|25.0 %|10 of 40|Median test time|1 h 2 min 35 s|77 attempts|";
        const QString lastLogs =
            "|Station|Last log|Age|One|Tue 17 Nov 08:00|24 h 0 min 0 s|Two|no log since "
            "Tue 17 Nov 07:59|24 h 0 min 1 s|Three|Wed 18 Nov 06:00|1 h 59 min 59 s|"
            "Four|no log yet|–|";
        const QString text = textOf(report());
        for (const QString& part : QStringList{
                 "|Definitions|Needs attention|", lastLogs,
                 "over time|1 unit with a first attempt before the year 2000 ",
                 "|First tested|Units" + yields + "Today so far, Wed 18 Nov 2026|0|–|–|–|0|" +
                     "Yesterday, Tue 17 Nov 2026|12,000|90.0 % (10,800 of 12,000)|within 89.2 % to "
                     "90.8 %|99.9 % (11,997 of 12,000)|1|Mon 16 Nov 2026|0|",
                 "|3 units whose last attempt did not pass, newest first, up to 5,000. ", again,
                 totals,
                 "|Tuesday, 17 Nov 2026: 12,000 units, first-pass yield 90.0 % (10,800 of 12,000)|",
                 "|Station|Units|Attempts" + yields + "Median test time|Top failure|One|300|350|" +
                     "50.0 % (150 of 300)|▼ below LCL, 84.3 % to 94.7 %|100 % (300 of 300)|30|"
                     "2 min 35 s (2 attempts)|Fader 3, 1 unit|",
                 "|Aborted first attempts: 0.1 % (1 of 12,000).|",
                 "at the same station: 25.0 % (10 of 40).|",
                 "|2,200 units, most attempts first, up to 200. ",
                 "|5,678|2026-11-18 07:15|One|passed|2026-11-18 07:15|Two|aborted|"})
            QVERIFY2(text.contains(part), qPrintable(part + "\nis not in\n" + text));
    }
};

QTEST_GUILESS_MAIN(TestPage)
#include "test_page.moc"
