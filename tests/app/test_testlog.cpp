// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/app/expectedlog.h"
#include "tests/reliability/forkedchild.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

#include <fcntl.h>
#include <sys/stat.h>

namespace
{
constexpr uid_t nobody = 65534;
constexpr uid_t otherUser = 65533;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// As that user where the test runs as root, otherwise as who runs it.
void writeAs(uid_t user, const QString& path, const QString& text, gid_t group = nobody)
{
    ForkedChild child([&] { testlog::write(path, {text}); }, user, group);
    QVERIFY(child.succeeded());
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
        give(logs.path(), nobody, 0755);
        log = logs.filePath("log");
    }
    void cleanup() { QFile::setPermissions(logs.path(), QFile::Permissions(0x7777)); }

    void serials_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("file"); // below Logs; empty: nothing may be written
        const auto written = [](const char* name, const QString& serial) {
            QTest::newRow(name) << serial << "ZORVI_" + serial + ".txt";
        };
        written("empty", "");
        written("spaces kept", " 1 2 ");
        written("place markers", "%1%2%L3");
        written("umlauts", "\u00e4\u00d6\u00fc");
        written("as long as a name may be", QString(245, '7'));
        QTest::newRow("too long") << QString(246, '7') << "";
        QTest::newRow("slash") << "a/b" << "";
        QTest::newRow("way out") << "/../../x" << "";
        QTest::newRow("NUL") << QString("a") + QChar::Null + 'b' << "";
    }

    /// Every byte of the log, over a longer one, and nothing else in the folder.
    void serials()
    {
        QFETCH(QString, serial);
        QFETCH(QString, file);
        const auto isCovered = [](int c, int band) { return (7 * c + band) % 3 == 0; };
        testlog::Coverage coverage;
        for (std::size_t c = 0; c < coverage.size(); ++c)
            for (int band = 0; band < (c >= 9 && c < 40 ? 2 : 13); ++band)
                coverage[c].append({0.0F, 0.0F, isCovered(static_cast<int>(c), band) ? 1.0F : 0});
        const QString path = testlog::path(folder->path(), serial);
        testlog::write(path, {QString(100000, 'x')});
        testlog::write(path, testlog::lines(serial, {{2026, 3, 9}, {7, 5, 4}}, coverage));

        QCOMPARE(logs.entryList(QDir::Files | QDir::Hidden).join('|'), file);
        QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList("Logs"));
        if (!file.isEmpty())
            QCOMPARE(contentOf(logs.filePath(file)),
                     expectedLog(QTextCodec::codecForLocale()->fromUnicode(serial),
                                 "Mon Mar 9 07:05:04 2026", isCovered));
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
        QTest::newRow("another user's") << 0777U << 0644U << otherUser << false;
        QTest::newRow("another user's, open") << 0777U << 0666U << otherUser << true;
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
        give(logs.path(), nobody, folderMode);
        writeAs(nobody, log, "new");
        QCOMPARE(contentOf(log), QByteArray(replaced ? "new\n" : "an old log\n"));
        QCOMPARE(modeOf(log), logMode);
        QCOMPARE(logs.entryList(QDir::Files | QDir::Hidden), QStringList("log"));
    }

    /// A link stays one, and what it leads to is written.
    void link()
    {
        const QString target = folder->filePath("target");
        const QString between = folder->filePath("between");
        QVERIFY(QFile::link("Logs/../target", between) && QFile::link("../between", log));
        for (const char* text : {"old\n", "new\n"}) {
            testlog::write(log, {QString(text).trimmed()});
            QCOMPARE(contentOf(target), QByteArray(text));
            QVERIFY(QFileInfo(log).isSymLink() && QFileInfo(between).isSymLink());
        }
        QVERIFY(QFile::remove(target) && QFile::remove(between));
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

    /// Where there is no folder, none is made.
    void noFolder()
    {
        QVERIFY(logs.removeRecursively());
        testlog::write(log, {"new"});
        QVERIFY(!QFileInfo::exists(logs.path()));
        QVERIFY(QFile::link(folder->filePath("nowhere"), logs.path()));
        testlog::write(log, {"new"});
        QVERIFY(!QFileInfo::exists(folder->filePath("nowhere")));
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    QDir logs;
    QString log;
};

QTEST_GUILESS_MAIN(TestTestLog)
#include "test_testlog.moc"
