// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/outbox.h"
#include "app/testlog.h"
#include "tests/support/figures.h"
#include "tests/support/station.h"
#include "unit/outboxname.h"

#include <QRandomGenerator>
#include <QTextCodec>

#include <csignal>

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using station::allEntries;

namespace
{
constexpr uid_t nobody = 65534; // also the group
constexpr uid_t otherUser = 65533;

/// Begins a piece of work in a process that ends within a minute; where the test runs as root, it
/// is done as the given user.
pid_t inChild(const std::function<void()>& work, uid_t user = 0)
{
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    alarm(60);
    if (geteuid() == 0 && user != 0 &&
        (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(user) != 0))
        _exit(EXIT_FAILURE);
    work();
    _exit(EXIT_SUCCESS);
}

/// Waits for the end of the work, which must not have been cut short.
bool isDone(pid_t pid)
{
    int status = -1;
    return waitpid(pid, &status, 0) == pid && status == 0;
}

bool isCovered(int component, int band)
{
    return (7 * component + band) % 3 == 0;
}

QStringList linesOf(const QString& serial)
{
    testlog::Coverage coverage;
    for (int c = 0; c < 44; ++c)
        for (int band = 0; band < (c >= 9 && c < 40 ? 2 : 13); ++band)
            coverage.at(static_cast<std::size_t>(c))
                .append({0.0F, 0.0F, isCovered(c, band) ? 1.0F : 0.0F});
    return testlog::lines(serial, {{2026, 3, 9}, {7, 5, 4}}, coverage);
}

QByteArray expected(const QString& serial)
{
    return expectedLog(serial.toLocal8Bit(), "Mon Mar 9 07:05:04 2026", isCovered);
}

/// A run with one log in the outbox.
void addToOutbox(const QDir& logs, const QString& serial)
{
    OutboxWriter outbox(logs.path());
    outbox.startRun();
    outbox.add(linesOf(serial), QDateTime::currentDateTime(), false);
}

/// What the process and its children print on stderr meanwhile.
QByteArray stderrOf(const std::function<void()>& work)
{
    std::array<int, 2> ends{};
    const int oldFd = dup(STDERR_FILENO);
    if (pipe(ends.data()) != 0 || dup2(ends[1], STDERR_FILENO) < 0 || close(ends[1]) != 0)
        return "no pipe";
    work();
    dup2(oldFd, STDERR_FILENO);
    close(oldFd);
    QFile reader;
    reader.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle);
    return reader.readAll();
}

mode_t modeOf(const QString& path)
{
    struct stat status = {};
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

    std::unique_ptr<QTemporaryDir> folder;
    QDir logs;
    QString log;

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        logs.setPath(folder->filePath("Logs"));
        QVERIFY(logs.mkpath("Outbox"));
        give(folder->path(), nobody, 0755);
        log = logs.filePath("ZORVI_1.txt");
    }
    void cleanup() { QFile::setPermissions(logs.path(), QFile::Permissions(0x7777)); }

    /// Every byte of the log, in the desktop's character set, over a longer log; nothing else in
    /// the folder, and nothing at all for a serial that cannot be in a file name.
    void serials()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-15"));
        const QStringList good{"",   " 1 2 ",    "%1%2%L3",        "\u00e4\u20ac",
                               "..", "\r\n\t\a", QString(245, '7')};
        const QStringList bad{QString(246, '7'), "a/b", "/../../x", QString("a") + QChar::Null};
        for (const QString& serial : good + bad) {
            const QString path = testlog::path(folder->path(), serial);
            testlog::write(path, {QString(100000, 'x')});
            testlog::write(path, linesOf(serial));
            const QString file = "ZORVI_" + serial + ".txt";
            QStringList files{"Outbox"};
            if (good.contains(serial)) {
                files << file;
                QCOMPARE(station::contentOf(path), expected(serial));
            }
            QCOMPARE(logs.entryList(allEntries), files);
            QCOMPARE(QDir(folder->path()).entryList(allEntries), QStringList("Logs"));
            logs.remove(file);
        }
    }

    /// A shorter log over an old one, as a user who is not root.
    void permissions()
    {
        const std::tuple<mode_t, mode_t, uid_t, QByteArray> rows[] = {
            {0755, 0640, nobody, "new"},     // as open as it was
            {0700, 0606, nobody, "new"},     //
            {0775, 0600, nobody, "new"},     // closed to the group that shares the folder
            {0777, 0444, nobody, "old log"}, // read-only
            {0555, 0644, nobody, "new"},     // the folder takes nothing,
            {0555, 0444, nobody, "old log"}, // nor does the log
            {0777, 0666, otherUser, "new"},  //
            {01777, 0666, otherUser, "new"}, // sticky: the log cannot be exchanged
        };
        for (const auto& [folderMode, logMode, owner, text] : rows) {
            if (owner != nobody && geteuid() != 0)
                QSKIP("only root can make another user's log");
            cleanup();
            init();
            testlog::write(log, {"old log"});
            give(log, owner, logMode);
            give(logs.path(), owner, folderMode);
            QVERIFY(isDone(inChild([this] { testlog::write(log, {"new"}); }, nobody)));
            const auto row = QString("folder %1, log %2").arg(folderMode, 0, 8).arg(logMode, 0, 8);
            QVERIFY2(station::contentOf(log) == text + '\n', qPrintable(row));
            QVERIFY2(modeOf(log) == logMode, qPrintable(row));
            QCOMPARE(logs.entryList(allEntries), (QStringList{"Outbox", "ZORVI_1.txt"}));
        }
    }

    /// Two members of the folder's group replace each other's log, whatever their masks. A new log
    /// is as open to the group as its folder, in the outbox as well.
    void group()
    {
        if (geteuid() != 0)
            QSKIP("only root can be two users");
        give(logs.path(), 0, 02775);
        give(logs.filePath("Outbox"), 0, 02775);
        const mode_t mask = umask(077);
        for (const QByteArray text : {"nobody's", "the other's", "nobody's again"}) {
            const auto write = [&] {
                testlog::write(log, {text});
                addToOutbox(logs, "1");
            };
            QVERIFY(isDone(inChild(write, text == "the other's" ? otherUser : nobody)));
            QCOMPARE(station::contentOf(log), text + '\n');
            QCOMPARE(modeOf(log), 0660U);
        }
        umask(mask);
        const auto files = QDir(logs.filePath("Outbox")).entryInfoList(QDir::Files);
        QCOMPARE(files.size(), 3);
        for (const QFileInfo& file : files)
            QCOMPARE(modeOf(file.filePath()), 0660U);
    }

    /// Links stay links, and what they lead to is written.
    void links()
    {
        QVERIFY(QFile::link("../target", log));
        for (const QString text : {"old", "new"}) {
            testlog::write(log, {text});
            QCOMPARE(station::contentOf(folder->filePath("target")), text.toLatin1() + '\n');
        }
        QVERIFY(QFileInfo(log).isSymLink());
    }

    /// Two stations write the same serial until they are killed. What is read meanwhile and
    /// afterwards is the whole log of one of them. In their outbox are whole logs, beside what is
    /// hidden.
    void killed()
    {
        const int rounds = figures::count(100, 2000);
        const QDir outbox(logs.filePath("Outbox"));
        const auto writeForEver = [this] {
            for (;;)
                for (const char* serial : {"one", "the other"}) {
                    addToOutbox(logs, serial);
                    testlog::write(log, linesOf(serial));
                }
        };
        testlog::write(log, linesOf("one"));
        QSet<QByteArray> found;
        int reads = 0;
        for (int i = 0; i < rounds; ++i) {
            const auto stations = {inChild(writeForEver), inChild(writeForEver)};
            for (const QDeadlineTimer end(QRandomGenerator::global()->bounded(20));
                 !end.hasExpired(); ++reads)
                found << station::contentOf(log);
            for (const pid_t station : stations) {
                kill(station, SIGKILL);
                QVERIFY(!isDone(station));
            }
            for (const QString& name : outbox.entryList(QDir::Files)) {
                QVERIFY(OutboxName::read(name));
                found << station::contentOf(outbox.filePath(name));
                QVERIFY(QFile::remove(outbox.filePath(name)));
            }
        }
        found << station::contentOf(log);
        QCOMPARE(found, (QSet<QByteArray>{expected("one"), expected("the other")}));
        figures::print(
            "two stations killed (SIGKILL) while writing the same log", rounds, 0,
            QString("%1 temporary files left").arg(logs.entryList(allEntries).size() - 2));
        figures::print("reads meanwhile", reads, 0);
    }

    /// Nothing or a link in the outbox's place: no log, and not a word.
    void noOutbox()
    {
        const QString outbox = logs.filePath("Outbox");
        QVERIFY(logs.rmdir("Outbox"));
        QCOMPARE(stderrOf([this] { addToOutbox(logs, "1"); }), QByteArray());
        QVERIFY(!QFileInfo::exists(outbox));
        QVERIFY(QFile::link(folder->path(), outbox));
        QCOMPARE(stderrOf([this] { addToOutbox(logs, "1"); }), QByteArray());
        QCOMPARE(QDir(folder->path()).entryList(allEntries), QStringList("Logs"));
    }

    /// Full but for some bytes: neither is the old log lost, nor does a new one appear, nor does
    /// anything else stay. Of the outbox one line says so.
    void fullDisk()
    {
        for (const rlim_t room : {0, 4096}) {
            testlog::write(log, linesOf("one"));
            const auto write = [&] {
                std::signal(SIGXFSZ, SIG_IGN);
                const rlimit limit{room, room};
                setrlimit(RLIMIT_FSIZE, &limit);
                testlog::write(log, linesOf("the other"));
                testlog::write(logs.filePath("new"), linesOf("the other"));
                addToOutbox(logs, "the other");
            };
            QCOMPARE(stderrOf([&] { QVERIFY(isDone(inChild(write))); }),
                     QFile::encodeName(logs.filePath("Outbox")) +
                         ": the log cannot be written: File too large\n");
            QCOMPARE(station::contentOf(log), expected("one"));
            QCOMPARE(logs.entryList(allEntries), (QStringList{"Outbox", "ZORVI_1.txt"}));
            QCOMPARE(QDir(logs.filePath("Outbox")).entryList(allEntries), QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(TestTestLog)
#include "test_testlog.moc"
