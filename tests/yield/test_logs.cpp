// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/unitlogs.h"
#include "yield/logs/logfiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <random>

#include <unistd.h>

namespace
{
using Bands = QVector<std::pair<int, int>>;

Bands allBands(int componentNum)
{
    Bands bands;
    for (int band = 0; band < bandmarks::bandCount(componentNum); ++band)
        bands.append({componentNum, band});
    return bands;
}
} // namespace

/// The readers on logs of the station's own writer and on others, and the meaning of the marks.
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
        row("blanks", "4711", " 47 11 ");
        row("UTF-8", "4711", "\uFEFFGröße 上 🎛 \uFFFE");
        row("the head of a block", "4711",
            "a\tb\n\r\n\r\n---------------- FADER: 0 (Component 0) ----------------");
        row("longest serial", "4711", QByteArray(1000, 'x'));
        row("empty", all, "", "half a log: it ends before the serial");
        row("other file", all, "Dear Sir", "no log");
        row("half of the date", all, all.left(50), "half a log: it ends before component 0");
        row("cut between blocks", all, all.left(all.indexOf("\r\n\r\n---------------- FADER: 3 ")),
            "half a log: it ends in component 3");
        row("half a block", all, all.left(3000), "half a log: it ends in component 20");
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
        row("weekday of another date", "Sun Mar", "Sat Mar", date);
        row("no such day", "Mar 29", "Feb 29", date);
        row("missing zero", "02:30:00", "02:30:0", date);
        row("zero too many", "Mar 29", "Mar 029", date);
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
        QVERIFY_EXCEPTION_THROWN(logfiles::read(folder.path()), std::runtime_error);
        if (getuid() == nobody)
            QVERIFY(setresuid(0, 0, 0) == 0);
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
        QCOMPARE(unentered, QStringList{folder.path()});
    }

    void outcome_data()
    {
        QTest::addColumn<BandMarks>("marks");
        QTest::addColumn<bool>("tests18");
        QTest::addColumn<Bands>("missed");
        QTest::addColumn<int>("abortedAt"); // -1: not aborted
        using namespace unitlogs;
        const BandMarks all = passedWith18;
        const auto row = [](const char* name, const BandMarks& marks, bool tests18,
                            const Bands& missed, int abortedAt = -1) {
            QTest::newRow(name) << marks << tests18 << missed << abortedAt;
        };
        row("passed", passed(), false, {});
        row("18 missed", passed(), true, {{18, 0}, {18, 1}});
        row("two bands", without(without(all, 8, 12), 40, 0), true, {{8, 12}, {40, 0}});
        row("last control begun", without(all, 43, 12), true, {{43, 12}});
        row("last control dead", without(all, 43), true, allBands(43));
        row("last two controls", without(without(all, 42), 43), true, {}, 42);
        row("aborted at 18", abortedAt(18), true, {}, 18);
        row("aborted behind the untested 18", abortedAt(18), false, {}, 19);
        row("aborted behind the power button", abortedAt(39), false, {}, 40);
        row("missed, then aborted", without(without(abortedAt(12), 3, 4), 11, 1), false,
            {{3, 4}, {11, 1}}, 12);
        row("two dead controls, not the last", without(without(all, 30), 31), true,
            allBands(30) + allBands(31));
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
