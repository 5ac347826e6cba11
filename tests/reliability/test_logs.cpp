// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/app/expectedlog.h"
#include "tests/reliability/childprocess.h"
#include "tests/reliability/figures.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <sys/stat.h>

#include <random>

namespace
{
const QString serial = QStringLiteral("4711");
const QString growing = QStringLiteral(".zorvi_log_in_the_making_");
const QString serialsLog = QStringLiteral("ZORVI_4711.txt");

bool run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Whether a log is one that the writing station can have meant: all there, and fader 0 covered or
/// nothing.
bool isWhole(const QByteArray& log)
{
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    return log == expectedLog(serial.toLatin1(), date, [](int) { return false; }) ||
           log == expectedLog(serial.toLatin1(), date, [](int c) { return c == 0; });
}
} // namespace

/// A station of its own in a folder of its own, killed while it does nothing but write logs.
class TestLogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Qt says so on the terminal when it is given a name with a NUL in it.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        QVERIFY(folder.isValid());
        station = folder.filePath(QStringLiteral("station"));
        QVERIFY(QFile::copy(QStringLiteral(STATION_CHILD), station));
        for (const QString& sound :
             QDir(QStringLiteral(PROJECT_RESOURCES)).entryList({QStringLiteral("*.wav")}))
            QVERIFY(
                QFile::copy(QStringLiteral(PROJECT_RESOURCES "/") + sound, folder.filePath(sound)));
        logs = folder.filePath(QStringLiteral("Logs"));
        log = testlog::path(folder.path(), serial);
    }

    void init() { QVERIFY(QDir().mkpath(logs)); }

    void cleanup()
    {
        if (mounted)
            mounted = !run(QStringLiteral("umount"), {logs});
        QVERIFY(!mounted);
        if (QFileInfo(logs).isSymLink() || QFileInfo(logs).isFile())
            QVERIFY(QFile::remove(logs));
        else
            QVERIFY(QDir(logs).removeRecursively());
    }

    void killed()
    {
        const int rounds = figures::count(20, 500);
        int broken = 0;
        int missing = 0;
        for (int i = 0; i < rounds; ++i) {
            QVERIFY(killOnce());
            const QByteArray content = contentOf(log);
            broken += isWhole(content) ? 0 : 1;
            missing += content.isEmpty() ? 1 : 0;
        }
        // What the killed left goes when a station is started later; what may be another station's
        // that is writing now stays, and so does an operator's copy.
        const QStringList left = leftovers();
        const QString copy = serialsLog + QStringLiteral(".backup");
        const QString young = growing + QLatin1Char('0');
        for (const QString& name : {copy, young})
            QVERIFY(QFile::copy(log, logs + QLatin1Char('/') + name));
        for (const QString& name : left + QStringList{copy})
            QVERIFY(makeOld(name));
        QVERIFY(killOnce());
        const QStringList after = leftovers();
        QVERIFY(after.contains(copy) && after.contains(young));
        const auto stillThere = std::count_if(
            left.cbegin(), left.cend(), [&](const QString& name) { return after.contains(name); });
        figures::print(QStringLiteral("killed (SIGKILL) while writing over a log"), rounds, broken,
                       QStringLiteral("%1 logs missing; %2 temporary files left, %3 after the next "
                                      "start")
                           .arg(missing)
                           .arg(left.size())
                           .arg(stillThere));
        QCOMPARE(broken, 0);
        QCOMPARE(stillThere, 0);
    }

    void killedWithBadFolder_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"full", "nearly full", "read-only", "removed", "a file", "a link"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }

    void killedWithBadFolder()
    {
        QFETCH(QString, kind);
        const int rounds = figures::count(3, 50);
        const bool keepsOldLog =
            kind == QLatin1String("read-only") || kind.contains(QLatin1String("full"));
        QVERIFY(QDir(logs).removeRecursively());
        if (keepsOldLog) {
            QVERIFY(QDir().mkpath(logs));
            mounted = run(QStringLiteral("mount"),
                          {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                           QStringLiteral("size=64k"), QStringLiteral("tmpfs"), logs});
            if (!mounted)
                QSKIP("this user cannot mount a small file system");
            writeOldLog();
        }
        if (kind.contains(QLatin1String("full")))
            fillUp(kind == QLatin1String("full") ? 0 : 4096);
        else if (keepsOldLog)
            QVERIFY(run(QStringLiteral("mount"),
                        {QStringLiteral("-o"), QStringLiteral("remount,ro"), logs}));
        else if (kind == QLatin1String("a file"))
            QVERIFY(QFile::copy(QStringLiteral(STATION_CHILD), logs));
        else if (kind == QLatin1String("a link"))
            QVERIFY(QFile::link(folder.filePath(QStringLiteral("nowhere")), logs));

        const QByteArray before = contentOf(log);
        const QStringList around = everything();
        int lost = 0;
        for (int i = 0; i < rounds; ++i) {
            QVERIFY(killOnce());
            lost += contentOf(log) == before ? 0 : 1;
        }
        figures::print(QStringLiteral("killed while writing, Logs %1").arg(kind), rounds, lost);
        QCOMPARE(lost, 0);
        QCOMPARE(everything(), around);
        QCOMPARE(isWhole(before), keepsOldLog);
    }

    /// Two stations write the same serial at once; somebody reads all the time.
    void twoStations()
    {
        const int reads = figures::count(500, 20000);
        ChildProcess first;
        ChildProcess second;
        QVERIFY(first.startAndWait(station, {QStringLiteral("logs"), serial}));
        QVERIFY(second.startAndWait(station, {QStringLiteral("logs"), serial}));
        int broken = 0;
        for (int i = 0; i < reads; ++i)
            broken += isWhole(contentOf(log)) ? 0 : 1;
        figures::print(QStringLiteral("reads while two stations write the same serial"), reads,
                       broken);
        QCOMPARE(broken, 0);
        QCOMPARE(first.state(), QProcess::Running);
        QCOMPARE(second.state(), QProcess::Running);
    }

private:
    static constexpr auto all =
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

    /// A station writes the first log and more, and is killed at some moment.
    bool killOnce()
    {
        ChildProcess process;
        if (!process.startAndWait(station, {QStringLiteral("logs"), serial}))
            return false;
        QThread::usleep(std::uniform_int_distribution<unsigned long>(0, 20000)(engine));
        process.kill();
        return process.waitForFinished(ChildProcess::patienceMs) &&
               process.exitStatus() == QProcess::CrashExit;
    }

    QStringList leftovers() const
    {
        QStringList names = QDir(logs).entryList(all);
        names.removeAll(serialsLog);
        return names;
    }

    /// All but what a station that was killed while it wrote leaves to the next start.
    QStringList everything() const
    {
        QStringList names = QDir(folder.path()).entryList(all) + QDir(logs).entryList(all);
        names.erase(std::remove_if(names.begin(), names.end(),
                                   [](const QString& name) { return name.startsWith(growing); }),
                    names.end());
        return names;
    }

    bool makeOld(const QString& name) const
    {
        QFile file(logs + QLatin1Char('/') + name);
        return file.open(QIODevice::ReadWrite) &&
               file.setFileTime(QDateTime::currentDateTime().addSecs(-61),
                                QFileDevice::FileModificationTime);
    }

    void writeOldLog() const
    {
        testlog::Coverage coverage;
        for (std::size_t c = 0; c < coverage.size(); ++c)
            coverage.at(c).fill({0.0F, 0.0F, 0.0F}, c >= 9 && c < 40 ? 2 : 13);
        testlog::write(log, testlog::lines(serial, QDateTime::currentDateTime(), coverage));
    }

    void fillUp(int room) const
    {
        QFile filler(logs + QStringLiteral("/filler"));
        QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray block(4096, 'x');
        while (filler.write(block) > 0)
            continue;
        QVERIFY(filler.resize(filler.size() - room));
    }

    QTemporaryDir folder;
    QString station;
    QString logs;
    QString log;
    bool mounted = false;
    std::mt19937 engine{4};
};

QTEST_GUILESS_MAIN(TestLogs)
#include "test_logs.moc"
