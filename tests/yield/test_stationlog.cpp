// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/logfiles.h"

#include "tests/yield/unitlogs.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <random>

#include <unistd.h>

/// The reader on logs of the station's own writer, and on others.
class TestStationLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");  // instead of what from is in the log
        QTest::addColumn<QString>("reason"); // why it is rejected, if it is
        const auto row = [](const char* name, const QByteArray& from, const QByteArray& to,
                            const char* reason) {
            QTest::newRow(name) << from << to << QString::fromUtf8(reason);
        };
        const QByteArray all = log();
        row("plain", "4711", "4711", "");
        row("no serial", "4711", "", "");
        row("blanks", "4711", " 47 11 ", "");
        row("UTF-8", "4711", "Größe 上 🎛 \uFFFE", "");
        row("mark of UTF-8", "4711", "\uFEFF4711", "");
        row("tab and line ends", "4711", "a\tb\nc\r\n\r\nd", "");
        row("the head of a block", "4711",
            "\n\r\n\r\n---------------- FADER: 0 (Component 0) ----------------", "");
        row("longest serial", "4711", QByteArray(1000, 'x'), "");
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
        row("UTF-16", all, "\xFF\xFE" + QByteArray(9000, 'N'), "byte order mark");
        row("UTF-8 with a mark", "Norvane", "\xEF\xBB\xBFNorvane", "byte order mark");
        row("Latin 1", "4711", "\xF6", "not valid UTF-8");
        row("NUL", "4711", QByteArray("4\0", 2), "NUL");
        row("endless serial", "4711", QByteArray(1001, 'x'), "longer than a file name");
        row("mark of 2", "Range 12: ", "Range 12: 2", "component 0");
        row("power button tested", "NOT TESTED", "TESTED", "component 39");
        row("no date", "\tSun Mar 29 02:30:00 2026", "", "no date");
        const char* date = "another language or form";
        row("German date", "Sun Mar 29", "So. März 29", date);
        row("weekday of another date", "Sun Mar", "Sat Mar", date);
        row("no such day", "Mar 29", "Feb 29", date);
        row("ISO date", "Sun Mar 29 02:30:00 2026", "2026-03-29T02:30:00", date);
        row("missing zero", "02:30:00", "02:30:0", date);
        row("zero too many", "Mar 29", "Mar 029", date);
        row("12 hours", "02:30:00", "02:30:0p", date);
    }

    void reads()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, reason);
        QByteArray bytes = log();
        QVERIFY(bytes.contains(from));
        QString why;
        const auto read = stationlog::read(bytes.replace(from, to), why);
        QCOMPARE(read.has_value(), reason.isEmpty());
        QVERIFY2(why.contains(reason), qPrintable(why));
        if (!read)
            return;
        QCOMPARE(read->serial, QString::fromUtf8("x" + to).mid(1));
        QCOMPARE(read->testedAt, QString("2026-03-29T02:30:00"));
        QVERIFY(read->marks == marks());
        QVERIFY(bandmarks::unpacked(bandmarks::packed(read->marks)) == marks());
    }

    /// Hidden files and those in folders are none; a folder that may be listed but not entered is
    /// read itself, so that the reading gives the reason.
    void filesOfFolder()
    {
        const QTemporaryDir folder;
        for (const char* name : {"b.txt", ".hidden.txt", "a.txt"})
            unitlogs::write(folder.filePath(name), name, marks());
        QVERIFY(QDir(folder.path()).mkdir("more"));
        const QStringList files{folder.filePath("a.txt"), folder.filePath("b.txt")};
        QCOMPARE(logfiles::filesOf(folder.path()), files);
        QCOMPARE(logfiles::filesOf(files[0]), QStringList{files[0]});

        constexpr uid_t nobody = 65534;
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x4444)));
        if (geteuid() == 0)
            QVERIFY(setresuid(nobody, nobody, 0) == 0);
        const QStringList unentered = logfiles::filesOf(folder.path());
        QString reason;
        const bool isRead = logfiles::read(folder.path(), reason).has_value();
        if (getuid() == nobody)
            QVERIFY(setresuid(0, 0, 0) == 0);
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
        QCOMPARE(unentered, QStringList{folder.path()});
        QVERIFY(!isRead && !reason.isEmpty());
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

QTEST_GUILESS_MAIN(TestStationLog)
#include "test_stationlog.moc"
