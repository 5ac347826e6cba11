// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/app/forkedchild.h"
#include "tests/support/expectedlog.h"
#include "tests/support/figures.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QThread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{
constexpr uid_t nobody = 65534;
constexpr uid_t otherUser = 65533;

bool isCovered(int component, int band)
{
    return (7 * component + band) % 3 == 0;
}

/// The unit's serial number, the date and the covered bands in a log.
void writeLog(const QString& path, const QString& serial)
{
    testlog::Coverage coverage;
    for (int c = 0; c < 44; ++c)
        for (int band = 0; band < (c >= 9 && c < 40 ? 2 : 13); ++band)
            coverage.at(static_cast<std::size_t>(c))
                .append({0.0F, 0.0F, isCovered(c, band) ? 1.0F : 0.0F});
    testlog::write(path, testlog::lines(serial, {{2026, 3, 9}, {7, 5, 4}}, coverage));
}

QByteArray expected(const QString& serial)
{
    return expectedLog(QTextCodec::codecForLocale()->fromUnicode(serial), "Mon Mar 9 07:05:04 2026",
                       isCovered);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

bool isWhole(const QByteArray& log)
{
    return log == expected("one") || log == expected("the other");
}

[[noreturn]] void writeForEver(const QString& path)
{
    for (;;) {
        writeLog(path, "one");
        writeLog(path, "the other");
    }
}

mode_t modeOf(const QString& path)
{
    struct stat status {
    };
    return stat(QFile::encodeName(path), &status) == 0 ? status.st_mode & 07777U : 0;
}

void give(const QString& path, uid_t user, mode_t mode)
{
    const QByteArray name = QFile::encodeName(path);
    QVERIFY(geteuid() != 0 || chown(name, user, nobody) == 0);
    QCOMPARE(chmod(name, mode), 0);
}
} // namespace

class TestTestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        logs.setPath(folder->filePath("Logs"));
        QVERIFY(logs.mkpath("."));
        give(folder->path(), nobody, 0755);
        log = logs.filePath("ZORVI_1.txt");
    }
    void cleanup() { QFile::setPermissions(logs.path(), QFile::Permissions(0x7777)); }

    void serials_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::addColumn<bool>("written");
        QTest::newRow("empty") << "" << true;
        QTest::newRow("spaces kept") << " 1 2 " << true;
        QTest::newRow("place markers") << "%1%2%L3" << true;
        QTest::newRow("umlauts") << "\u00e4\u00d6\u00fc" << true;
        QTest::newRow("as long as a name may be") << QString(245, '7') << true;
        QTest::newRow("too long") << QString(246, '7') << false;
        QTest::newRow("slash") << "a/b" << false;
        QTest::newRow("way out") << "/../../x" << false;
        QTest::newRow("NUL") << QString("a") + QChar::Null + 'b' << false;
    }

    /// Every byte of the log, over a longer one, and nothing else in the folder.
    void serials()
    {
        QFETCH(QString, serial);
        QFETCH(bool, written);
        const QString path = testlog::path(folder->path(), serial);
        testlog::write(path, {QString(100000, 'x')});
        writeLog(path, serial);
        const QStringList files = written ? QStringList("ZORVI_" + serial + ".txt") : QStringList();
        QCOMPARE(logs.entryList(all), files);
        QCOMPARE(QDir(folder->path()).entryList(all), QStringList("Logs"));
        if (written)
            QCOMPARE(contentOf(logs.filePath(files.first())), expected(serial));
    }

    void permissions_data()
    {
        QTest::addColumn<uint>("folderMode");
        QTest::addColumn<uint>("logMode");
        QTest::addColumn<uint>("logsOwner");
        QTest::addColumn<bool>("replaced");
        QTest::newRow("kept") << 0755U << 0640U << nobody << true;
        QTest::newRow("log for everybody") << 0700U << 0606U << nobody << true;
        QTest::newRow("read-only log") << 0777U << 0444U << nobody << false;
        QTest::newRow("folder takes nothing") << 0555U << 0644U << nobody << true;
        QTest::newRow("neither does the log") << 0555U << 0444U << nobody << false;
        QTest::newRow("another user's, open") << 0777U << 0666U << otherUser << true;
        QTest::newRow("sticky folder") << 01777U << 0666U << otherUser << true;
    }

    /// A shorter log over an old one, as a user who is not root.
    void permissions()
    {
        QFETCH(uint, folderMode);
        QFETCH(uint, logMode);
        QFETCH(uint, logsOwner);
        QFETCH(bool, replaced);
        if (logsOwner != nobody && geteuid() != 0)
            QSKIP("only root can make another user's log");
        testlog::write(log, {"an old log"});
        give(log, logsOwner, logMode);
        give(logs.path(), logsOwner, folderMode);
        const ForkedChild station([this] { testlog::write(log, {"new"}); }, nobody);
        QVERIFY(station.succeeded());
        QCOMPARE(contentOf(log), QByteArray(replaced ? "new\n" : "an old log\n"));
        QCOMPARE(modeOf(log), logMode);
        QCOMPARE(logs.entryList(all), QStringList("ZORVI_1.txt"));
    }

    /// Two members of the folder's group replace each other's log, whatever their masks.
    void group()
    {
        if (geteuid() != 0)
            QSKIP("only root can be two users");
        give(logs.path(), 0, 02775);
        for (const auto& [user, text] :
             {std::pair(nobody, "one"), std::pair(otherUser, "two"), std::pair(nobody, "three")}) {
            const ForkedChild station(
                [&, line = QString(text)] {
                    umask(077);
                    testlog::write(log, {line});
                },
                user, nobody);
            QVERIFY(station.succeeded());
            QCOMPARE(contentOf(log), QByteArray(text) + '\n');
            QCOMPARE(modeOf(log), 0660U);
        }
    }

    /// Links stay links, and what they lead to is written.
    void links()
    {
        const QString target = folder->filePath("target");
        const QString between = folder->filePath("between");
        QVERIFY(QFile::link("target", between) && QFile::link("../between", log));
        for (const QString text : {"old", "new"}) {
            testlog::write(log, {text});
            QCOMPARE(contentOf(target), text.toLatin1() + '\n');
            QVERIFY(QFileInfo(log).isSymLink() && QFileInfo(between).isSymLink());
        }
    }

    /// What is no file is written to and not replaced.
    void pipe()
    {
        QCOMPARE(mkfifo(QFile::encodeName(log), 0666), 0);
        const int reader = open(QFile::encodeName(log), O_RDONLY | O_NONBLOCK);
        testlog::write(log, {"new"});
        std::array<char, 100> text{};
        QCOMPARE(read(reader, text.data(), text.size()), ssize_t{4});
        close(reader);
        QVERIFY(QFileInfo::exists(log) && !QFileInfo(log).isFile());
    }

    void killed()
    {
        const int rounds = figures::count(100, 2000);
        writeLog(log, "one");
        int written = 0;
        for (int i = 0; i < rounds; ++i) {
            {
                const ForkedChild station([this] { writeForEver(log); });
                QThread::usleep(QRandomGenerator::global()->bounded(20000U));
            }
            const QByteArray after = contentOf(log);
            QVERIFY2(isWhole(after), after);
            written += after != expected("one") ? 1 : 0;
        }
        QVERIFY(written > 0);
        figures::print("killed (SIGKILL) while writing over a log", rounds, 0,
                       QString("%1 temporary files left").arg(logs.entryList(all).size() - 1));
    }

    void twoStations()
    {
        const int reads = figures::count(500, 20000);
        writeLog(log, "one");
        const ForkedChild first([this] { writeForEver(log); });
        const ForkedChild second([this] { writeForEver(log); });
        for (int i = 0; i < reads; ++i)
            QVERIFY(isWhole(contentOf(log)));
        figures::print("reads while two stations write the same serial", reads, 0);
    }

    /// Full but for some bytes: neither is the old log lost, nor does a new one appear, nor does
    /// anything else stay.
    void fullDisk()
    {
        const int times = figures::count(20, 1000);
        for (const rlim_t room : {0, 4096}) {
            writeLog(log, "one");
            const ForkedChild station([&] {
                std::signal(SIGXFSZ, SIG_IGN);
                const rlimit limit{room, room};
                setrlimit(RLIMIT_FSIZE, &limit);
                for (int i = 0; i < times; ++i) {
                    writeLog(log, "the other");
                    writeLog(logs.filePath("new"), "the other");
                }
            });
            QVERIFY(station.succeeded());
            QCOMPARE(contentOf(log), expected("one"));
            QCOMPARE(logs.entryList(all), QStringList("ZORVI_1.txt"));
        }
        figures::print("logs written over, disk full or nearly", 2 * times, 0);
    }

    /// The real station, at its start, removes what one that was killed left long ago. What another
    /// one may be writing now stays, and so do an operator's files.
    void leftovers()
    {
        const QDir program = QFileInfo(ZORVI_STATION).dir();
        for (const QString& name : program.entryList({"zorvi_assembly_test", "*.wav"}))
            QVERIFY(QFile::copy(program.filePath(name), folder->filePath(name)));
        const QStringList left{"ZORVI_1.txt.aBcDeF", "ZORVI_a b.txt.QQqqQQ",
                               ".zorvi_log_in_the_making_0123"};
        const QStringList kept{"ZORVI_1.txt",         "ZORVI_1.txt.backup",  "ZORVI_1.txt.Backup",
                               "ZORVI_1.txt.BACKUP",  "ZORVI_1.txt.aBcDe",   "ZORVI_1.txt.aBcDe1",
                               "ZORVI_1.txt.aBcDeFg", "ZORVI_1.txt.aBcDeF~", "ZORVI_1.aBcDeF",
                               "notes.txt.aBcDeF",    "ZORVI_2.txt.aBcDeF"};
        for (const QString& name : left + kept) {
            QFile file(logs.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            const int age = name == kept.last() ? 30 : 90;
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-age),
                                     QFileDevice::FileModificationTime));
        }
        qputenv("QT_QPA_PLATFORM", "offscreen");
        const QByteArray path = folder->filePath("zorvi_assembly_test").toLocal8Bit();
        const ForkedChild station([&] { execl(path, path.constData(), nullptr); });
        QTRY_COMPARE_WITH_TIMEOUT(logs.entryList(all).size(), kept.size(), 30000);
        for (const QString& name : kept)
            QVERIFY2(logs.exists(name), qPrintable(name));
    }

private:
    static constexpr auto all =
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

    std::unique_ptr<QTemporaryDir> folder;
    QDir logs;
    QString log;
};

QTEST_GUILESS_MAIN(TestTestLog)
#include "test_testlog.moc"
