// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"
#include "yield/page/figuretext.h"
#include "yield/page/page.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QTest>

/// What the plants of model.py do not have.
class TestPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts()
    {
        Report report;
        report.request.now = QDateTime({2026, 11, 18}, {8, 0});
        report.request.lastLogs = {
            {"One", "2026-11-17T08:00:00"},   {"Two", "2026-11-17T07:59:59"},
            {"Three", "2026-11-18T06:00:00"}, {"Four", "2026-11-18T06:00:01"},
            {"Five", "2026-11-16T08:00:00"},  {"Six", {}}};
        report.total = {12000, 14000, 10800, 6900, 120};
        report.controls.fill({}, 44);
        Attempt attempt{"One", true, "open", "2026-11-18T07:15:59", ~BandMarks() >> 26};
        const QVector<bandmarks::Band> missed{{3, 0}, {3, 1},  {3, 5},  {3, 11}, {3, 12},
                                              {9, 1}, {10, 0}, {10, 1}, {11, 0}};
        for (const auto& band : missed)
            attempt.marks.reset(bandmarks::markIndex(band.componentNum, band.band));
        report.openUnits = {{attempt, attempt, 1234}};
        report.repeatedUnits = {{attempt, attempt, 5678}};
        report.repeatedUnits.first().last.serial = "again";
        report.repeatedUnitCount = 2200;
        QBuffer buffer;
        QVERIFY(buffer.open(QIODevice::WriteOnly) && page::write(report, buffer));
        // A stroke where elements begin and end.
        const QString text = QString::fromUtf8(buffer.data())
                                 .replace(QRegularExpression("\\s*<[^>]*>[\\s|]*"), "|")
                                 .replace(QRegularExpression("\\|+"), "|")
                                 .simplified();
        const QString yields = "|Units|First-pass yield|Limits|Final yield so far|Ended early|";
        const QStringList parts = {
            "|First tested" + yields + "Today so far, Wed 18 Nov 2026|0|–|–|–|–|Yesterday, Tue",
            "|Serial number|Last tested|Station|Attempts|What the last attempt missed|open|",
            "|First tested" + yields + "Stations",
            "|Station|Units|Attempts" + yields.mid(6) + "Most missed|The",
            "|Control|Missed by|Of all misses|Added up|",
            "|Control|Band|Missed by|",
            "|Ended at|First attempts|",
            "|Attempt|Attempts|Complete|Ended early|",
            ("|First attempt|First station|First result|Last attempt|Last station|Last "
             "result|again|"),
            "|One|Tue 17 Nov 08:00|24 hours|",
            "|Two|nothing since Tue 17 Nov 07:59|24 hours|",
            "|Three|Wed 18 Nov 06:00|2 hours|",
            "|Four|Wed 18 Nov 06:00|119 min|",
            "|Five|nothing since Mon 16 Nov 08:00|2 days|",
            "|Six|no log yet|–|",
            "|5,100 units whose last attempt is not complete, newest first",
            ("|open|2026-11-18 07:15|One|1,234|ended early at Rotary 2; Fader 3: 0 to 19, 50 to "
             "59, 110 to 127; Button 0: pressed; Button 1: all; and 1 more|And 5,099 more;"),
            "|2,200 units, most attempts first.|",
            "|And 2,199 more;",
        };
        for (const QString& part : parts)
            QVERIFY2(text.contains(part), qPrintable(part + " in " + text));
    }

    /// Only all are 100 %, and only none 0 %.
    void shares()
    {
        QCOMPARE(figuretext::percent(99999, 100000), QString("99.9\u00a0%"));
        QCOMPARE(figuretext::percent(1, 100000), QString("0.1\u00a0%"));
        QCOMPARE(figuretext::share(1234, 1234), QString("100\u00a0% (1,234 of 1,234)"));
    }
};

QTEST_GUILESS_MAIN(TestPage)
#include "test_page.moc"
