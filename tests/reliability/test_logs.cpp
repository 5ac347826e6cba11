// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/app/expectedlog.h"
#include "tests/reliability/figures.h"
#include "tests/reliability/forkedchild.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <sys/resource.h>

namespace
{
const QString serial = QStringLiteral("4711");

/// Fader 0 covered, or nothing.
void writeLog(const QString& path, bool covered)
{
    testlog::Coverage coverage;
    for (std::size_t c = 0; c < coverage.size(); ++c)
        coverage.at(c).fill({0.0F, 0.0F, c == 0 && covered ? 1.0F : 0.0F},
                            c >= 9 && c < 40 ? 2 : 13);
    testlog::write(path, testlog::lines(serial, QDateTime::currentDateTime(), coverage));
}

[[noreturn]] void writeLogsForEver(const QString& path)
{
    for (bool covered = true;; covered = !covered)
        writeLog(path, covered);
}

/// Empty if there is none.
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isWhole(const QByteArray& log)
{
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    return log == expectedLog(serial.toLatin1(), date, [](int) { return false; }) ||
           log == expectedLog(serial.toLatin1(), date, [](int c) { return c == 0; });
}
} // namespace

/// Processes that do nothing but write the log of one serial number.
class TestLogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        logs.setPath(folder->filePath("Logs"));
        QVERIFY(logs.mkpath("."));
        log = testlog::path(folder->path(), serial);
        writeLog(log, false);
    }

    void killed()
    {
        const int rounds = figures::count(100, 2000);
        int written = 0;
        for (int i = 0; i < rounds; ++i) {
            const QByteArray before = contentOf(log);
            {
                const ForkedChild station([this] { writeLogsForEver(log); });
                QThread::usleep(QRandomGenerator::global()->bounded(20000U));
            }
            const QByteArray after = contentOf(log);
            QVERIFY2(isWhole(after), after);
            written += after != before ? 1 : 0;
        }
        QVERIFY(written > 0);
        figures::print("killed (SIGKILL) while writing over a log", rounds, 0,
                       QString("%1 temporary files left").arg(logs.entryList(all).size() - 1));
    }

    void twoStations()
    {
        const int reads = figures::count(500, 20000);
        const ForkedChild first([this] { writeLogsForEver(log); });
        const ForkedChild second([this] { writeLogsForEver(log); });
        for (int i = 0; i < reads; ++i) {
            const QByteArray content = contentOf(log);
            QVERIFY2(isWhole(content), content);
        }
        figures::print("reads while two stations write the same serial", reads, 0);
    }

    void fullDisk_data()
    {
        QTest::addColumn<int>("room");
        QTest::newRow("full") << 0;
        QTest::newRow("nearly full") << 4096;
    }

    /// Neither is the old log lost, nor does a new one appear, nor anything else stay.
    void fullDisk()
    {
        QFETCH(int, room);
        const int times = figures::count(20, 1000);
        const QByteArray before = contentOf(log);
        ForkedChild station([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{static_cast<rlim_t>(room), static_cast<rlim_t>(room)};
            setrlimit(RLIMIT_FSIZE, &limit);
            for (int i = 0; i < times; ++i) {
                writeLog(log, true);
                writeLog(testlog::path(folder->path(), "new"), true);
            }
        });
        QVERIFY(station.succeeded());
        QCOMPARE(contentOf(log), before);
        QCOMPARE(logs.entryList(all), QStringList("ZORVI_4711.txt"));
        figures::print(QString("logs written over, disk %1").arg(QTest::currentDataTag()), times,
                       0);
    }

    /// The real station, at its start, removes what one that was killed left long ago. What another
    /// one may be writing now stays, and so do an operator's copies.
    void leftovers()
    {
        const QDir program = QFileInfo(ZORVI_STATION).dir();
        for (const QString& name : program.entryList({"zorvi_assembly_test", "*.wav"}))
            QVERIFY(QFile::copy(program.filePath(name), folder->filePath(name)));
        const QString left = ".zorvi_log_in_the_making_0123";
        const QStringList kept{"ZORVI_4711.txt", "ZORVI_4711.txt.backup", ".hidden",
                               ".zorvi_log_in_the_making_4567"};
        for (const QString& name : kept + QStringList{left}) {
            QFile file(logs.filePath(name));
            QVERIFY(file.open(QIODevice::ReadWrite));
            const int age = name == kept.last() ? 30 : 90;
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-age),
                                     QFileDevice::FileModificationTime));
        }
        const QByteArray path = folder->filePath("zorvi_assembly_test").toLocal8Bit();
        const ForkedChild station([&] { execl(path, path.constData(), nullptr); });
        QTRY_VERIFY_WITH_TIMEOUT(!logs.exists(left), 30000);
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

QTEST_GUILESS_MAIN(TestLogs)
#include "test_logs.moc"
