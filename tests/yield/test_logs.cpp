// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/unitlogs.h"

#include <QTest>

#include <random>

/// The reader on logs of the station's own writer and on others; model.py has the meaning of marks.
class TestLogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");    // instead of what from is in the log
        QTest::addColumn<QString>("rejected"); // why, if it is
        const auto row = [](const char* name, const QByteArray& from, const QByteArray& to,
                            const char* rejected = "") {
            QTest::newRow(name) << from << to << QString(rejected);
        };
        const QByteArray all = log();
        row("no serial", "4711", "");
        row("UTF-8 and blanks", "4711", " \uFEFFGröße 上 🎛 \uFFFE ");
        row("the head of a block", "4711",
            "a\tb\n\r\n\r\n---------------- FADER: 0 (Component 0) ----------------");
        row("longest serial", "4711", QByteArray(1000, 'x'));
        row("empty", all, "", "half a log: it ends before the serial");
        row("half of the date", all, all.left(50), "half a log: it ends before component 0");
        row("cut between blocks", all, all.left(all.indexOf("\r\n\r\n---------------- FADER: 3 ")),
            "half a log: it ends in component 3");
        row("last byte missing", all, all.chopped(1), "half a log: it ends in component 43");
        row("two logs", all, all + all, "too long");
        row("more text", all, all + "\n", "goes on after");
        row("DOS line ends", "\n", "\r\n", "line ends");
        row("Latin 1", "4711", "\xF6", "not valid UTF-8");
        row("NUL", "4711", QByteArray("4\0", 2), "NUL");
        row("endless serial", "4711", QByteArray(1001, 'x'), "longer than a file name");
        row("mark of 2", "Range 12: ", "Range 12: 2", "component 0");
        row("power button tested", "NOT TESTED", "TESTED", "component 39");
        row("no date", "\tSun Mar 29 02:30:00 2026", "", "no date");
        const char* date = "another language or form";
        row("German date", "Sun Mar 29", "So. März 29", date);
        row("no such day", "Mar 29", "Feb 29", date);
        row("missing zero", "02:30:00", "02:30:0", date);
    }

    void reads()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, rejected);
        QByteArray bytes = log();
        QVERIFY(bytes.contains(from));
        bytes.replace(from, to);
        try {
            const StationLog read = stationlog::read(bytes);
            QCOMPARE(rejected, QString());
            QCOMPARE(read.serial, QString::fromUtf8("x" + to).mid(1));
            QCOMPARE(read.testedAt, QString("2026-03-29T02:30:00"));
            QVERIFY(read.marks == marks());
            QVERIFY(bandmarks::unpacked(bandmarks::packed(read.marks)) == marks());
        } catch (const NotALog& error) {
            QVERIFY2(!rejected.isEmpty() && QString(error.what()).contains(rejected), error.what());
        }
    }

private:
    static BandMarks marks()
    {
        std::mt19937 random(1);
        BandMarks marks;
        for (std::size_t i = 0; i < marks.size(); ++i)
            marks[i] = random() % 2 == 0;
        return marks;
    }

    /// A log of an hour that this computer's clock leaves out, and the station's may not.
    static QByteArray log()
    {
        const QByteArray bytes =
            unitlogs::lines("4711", unitlogs::noon(), marks()).join('\n').toUtf8();
        return QByteArray(bytes).replace("Sat Nov 21 12:00:00", "Sun Mar 29 02:30:00") + '\n';
    }
};

QTEST_GUILESS_MAIN(TestLogs)
#include "test_logs.moc"
