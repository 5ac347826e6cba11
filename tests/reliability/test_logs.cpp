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
            if (!killOnce())
                return;
            const QByteArray content = contentOf(log);
            broken += isWhole(content) ? 0 : 1;
            missing += content.isEmpty() ? 1 : 0;
        }
        // What the killed left goes when a station is started later.
        const int left = leftovers().size();
        for (const QString& name : leftovers())
            makeOld(name);
        const QString fresh = logs + QStringLiteral("/.zorvi_log_in_the_making_0");
        const QString notOurs = log + QStringLiteral(".backup");
        for (const QString& path : {fresh, notOurs})
            QVERIFY(QFile::copy(log, path));
        makeOld(QFileInfo(notOurs).fileName());
        QVERIFY(killOnce());
        QVERIFY(QFile::exists(fresh)); // may be another station's that is writing now
        QVERIFY(QFile::exists(notOurs));
        const int stillThere = static_cast<int>(
            std::count_if(oldNames.cbegin(), oldNames.cend(), [this](const QString& name) {
                return name != QFileInfo(log + QStringLiteral(".backup")).fileName() &&
                       QFile::exists(logs + QLatin1Char('/') + name);
            }));
        figures::print(QStringLiteral("killed (SIGKILL) while writing over a log"), rounds, broken,
                       QStringLiteral("%1 logs missing; %2 temporary files left, %3 after the next "
                                      "start")
                           .arg(missing)
                           .arg(left)
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

    /// Whatever is typed, nothing appears but files in Logs.
    void generatedSerials()
    {
        const int serials = figures::count(5000, 100000);
        QTemporaryDir base(QStringLiteral("/dev/shm/zorvi_XXXXXX"));
        if (!base.isValid())
            QSKIP("no /dev/shm");
        const QDir home(base.path());
        QVERIFY(home.mkpath(QStringLiteral("a/b/c/Logs")));
        const QString application = base.filePath(QStringLiteral("a/b/c"));
        const QDir written(application + QStringLiteral("/Logs"));
        const testlog::Coverage coverage;
        int outside = 0;
        int files = 0;
        for (int i = 0; i < serials; ++i) {
            const QString typed = generated();
            testlog::write(testlog::path(application, typed),
                           testlog::lines(typed, QDate(2026, 1, 1).startOfDay(), coverage));
            if (i % 100 != 99)
                continue;
            outside += home.entryList(all) == QStringList{QStringLiteral("a")} ? 0 : 1;
            for (const char* inner : {"a", "a/b", "a/b/c"})
                outside += QDir(base.filePath(QLatin1String(inner))).entryList(all).size() - 1;
            outside += written.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
            for (const QString& name : written.entryList(all)) {
                ++files;
                outside += name.startsWith(QLatin1String("ZORVI_")) ? 0 : 1;
                QFile::remove(written.filePath(name));
            }
        }
        figures::print(QStringLiteral("generated serial numbers"), serials, outside,
                       QStringLiteral("%1 files, all in Logs").arg(files));
        QCOMPARE(outside, 0);
        QVERIFY(files > 0);
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
        names.removeAll(QFileInfo(log).fileName());
        return names;
    }

    QStringList everything() const
    {
        return QDir(folder.path()).entryList(all) + QDir(logs).entryList(all);
    }

    void makeOld(const QString& name)
    {
        QFile file(logs + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-61),
                                 QFileDevice::FileModificationTime));
        oldNames << name;
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

    /// Path separators, dots, control characters, NUL, right-to-left, halves of surrogate pairs,
    /// place markers; up to 4 kB long.
    QString generated()
    {
        static const QVector<ushort> odd{'/', '.',    '\\',   0,      '\n',   '\r',   '%',  '1',
                                         ':', 0x202E, 0x05D0, 0xD800, 0xDC00, 0xFFFF, 0x7F, '~'};
        const auto below = [this](int bound) {
            return std::uniform_int_distribution<int>(0, bound - 1)(engine);
        };
        static const QStringList ways{QStringLiteral("/../../x"), QStringLiteral("../x"),
                                      QStringLiteral("/etc/x"),   QStringLiteral("x/../../../y"),
                                      QStringLiteral("/./.."),    QStringLiteral("//")};
        QString text;
        if (below(4) == 0)
            text += ways.at(below(ways.size()));
        for (int rest = below(below(20) == 0 ? 4096 : 12); rest > 0; --rest)
            text += QChar(below(2) == 0 ? odd.at(below(odd.size()))
                                        : static_cast<ushort>(1 + below(0x250)));
        return text;
    }

    QTemporaryDir folder;
    QString station;
    QString logs;
    QString log;
    QStringList oldNames;
    bool mounted = false;
    std::mt19937 engine{4};
};

QTEST_GUILESS_MAIN(TestLogs)
#include "test_logs.moc"
