// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/stationlog.h"

#include "tests/yield/unitlogs.h"

#include <QTest>

#include <random>

namespace
{
QByteArray written(const QString& serial, const BandMarks& marks)
{
    return unitlogs::lines(serial, unitlogs::noon(), marks).join('\n').toUtf8() + '\n';
}
} // namespace

/// The reader on what the station's own writer gives, and on what it never gives.
class TestStationLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }

    void readsWhatTheStationWrites_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::newRow("byte order mark") << "\uFEFF4711\uFFFE";
        QTest::newRow("plain") << "4711";
        QTest::newRow("empty") << "";
        QTest::newRow("blanks") << " 47 11 ";
        QTest::newRow("UTF-8") << QString::fromUtf8("Größe 上 \xF0\x9F\x8E\x9B");
        QTest::newRow("tab and line ends") << "a\tb\nc\r\n\r\nd";
        QTest::newRow("the head of a block")
            << "\n\r\n\r\n---------------- FADER: 0 (Component 0) ----------------";
    }

    void readsWhatTheStationWrites()
    {
        QFETCH(QString, serial);
        std::mt19937 random(1);
        BandMarks marks;
        for (std::size_t i = 0; i < marks.size(); ++i)
            marks[i] = random() % 2 == 0;
        QString reason;
        // An hour that this computer's clock leaves out, and the station's may not.
        const QByteArray bytes =
            written(serial, marks).replace("Sat Nov 21 12:00:00", "Sun Mar 29 02:30:00");
        const auto log = stationlog::read(bytes, reason).value_or(StationLog());
        QCOMPARE(reason, QString());
        QCOMPARE(log.serial, serial);
        QCOMPARE(log.testedAt, QString("2026-03-29T02:30:00"));
        QVERIFY(log.marks == marks);
        QVERIFY(bandmarks::unpacked(bandmarks::packed(marks)) == marks);
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to"); // instead of what from is in the log
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& from, const QByteArray& to,
                            const char* reason) {
            QTest::newRow(name) << from << to << QString::fromUtf8(reason);
        };
        const QByteArray all = written(QString("4711"), unitlogs::whole());
        row("empty", all, "", "half a log");
        row("other file", all, "Dear Sir", "no log");
        row("half a head", all, all.left(15), "half a log: it ends before the serial");
        row("half of the date", all, all.left(50), "half a log: it ends before component 0");
        row("cut between blocks", all, all.left(all.indexOf("\r\n\r\n---------------- FADER: 3 ")),
            "half a log: it ends in component 3");
        row("half a block", all, all.left(3000), "half a log: it ends in component 20");
        row("last byte missing", all, all.chopped(1), "half a log: it ends in component 43");
        row("two logs", all, all + all, "too long");
        row("more text", all, all + "\n", "goes on after");
        row("DOS line ends", "\n", "\r\n", "line ends");
        row("UTF-16", all, QByteArray("\xFF\xFEN\0", 4), "encoding");
        row("UTF-8 with a mark", "Norvane", "\xEF\xBB\xBFNorvane", "encoding");
        row("Latin 1", "4711",
            "Gr\xF6\xDF"
            "e",
            "encoding");
        row("NUL", "4711", QByteArray("4\0", 2), "NUL");
        row("endless serial", "4711", QByteArray(1001, 'x'), "longer than a file name");
        row("mark of 2", "Range 12: 1", "Range 12: 2", "component 0");
        row("power button tested", "NOT TESTED", "TESTED", "component 39");
        row("no date", "\tSat Nov 21 12:00:00 2026", "", "no date");
        row("German date", "Sat Nov 21", "Sa. Nov. 21", "another language or form");
        row("French date", "Sat Nov", "sam. nov.", "another language or form");
        row("weekday of another date", "Sat Nov", "Sun Nov", "another language or form");
        row("no such day", "Nov 21", "Feb 29", "another language or form");
        row("ISO date", "Sat Nov 21 12:00:00 2026", "2026-11-21T12:00:00", "language or form");
        row("missing zero", "12:00:00", "12:00:0", "another language or form");
        row("zero too many", "Nov 21", "Nov 021", "another language or form");
        row("12 hours", "12:00:00", "12:00:0p", "another language or form");
    }

    void refuses()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, reason);
        QByteArray log = written(QString("4711"), unitlogs::whole());
        QVERIFY(log.contains(from));
        log.replace(from, to);
        QString given;
        QVERIFY(!stationlog::read(log, given));
        QVERIFY2(given.contains(reason), qPrintable(given));
    }
};

QTEST_GUILESS_MAIN(TestStationLog)
#include "test_stationlog.moc"
