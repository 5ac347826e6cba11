// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/station.h"
#include "unit/outboxname.h"

#include <QDir>

#include <unistd.h>

namespace
{
/// What the process prints on stderr meanwhile.
QByteArray stderrOf(const std::function<void()>& work)
{
    QTemporaryFile file;
    file.open();
    const int oldFd = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    work();
    dup2(oldFd, STDERR_FILENO);
    close(oldFd);
    return station::contentOf(file.fileName());
}

void coverBandOf(MainWindow& window, int component)
{
    Q_EMIT window.signal_QueueComponent(component);
    station::receive(window, passingMessages(component).mid(0, 1));
}
} // namespace

class TestOutbox : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QDir logs{QCoreApplication::applicationDirPath() + "/Logs"};
    const QDir outbox{logs.filePath("Outbox")};

    QStringList names() const { return outbox.entryList(station::allEntries, QDir::Name); }
    /// The run of the last log.
    QString lastRun() const { return names().value(names().size() - 1).left(36); }
    QByteArray logOf(const QString& serial) const
    {
        return station::contentOf(logs.filePath("ZORVI_" + serial + ".txt"));
    }

private Q_SLOTS:
    void initTestCase() { station::quiet(); }
    void init()
    {
        cleanup();
        QVERIFY(logs.mkdir("Outbox"));
    }
    void cleanup()
    {
        QFile::remove(outbox.path());
        QDir(outbox).removeRecursively();
    }

    void readName()
    {
        const QString run = "20260309T070504.001-00fedcba98765432";
        for (const QString& name : {run + "-1.txt", run + "-12-TARVEK.txt"}) {
            const auto read = OutboxName::read(name);
            QVERIFY(read && read->fileName() == name);
            QCOMPARE(read->startedAt(), QString("2026-03-09T07:05:04.001"));
        }
        for (const QString& name :
             {QString("20260230T070504.001-00fedcba98765432-1.txt"), // no such day
              QString("20260309T070504.001-0fedcba98765432-1.txt"),  // 15 digits
              run.toUpper() + "-1.txt", run + "-0.txt", run + "-1 (copy).txt", run + "-1.txt\n",
              "." + run + "-1.txt", "." + run + "-1.txt.part"})
            QVERIFY2(!OutboxName::read(name), qPrintable(name));
    }

    void runs_data()
    {
        QTest::addColumn<QString>("ending");
        QTest::newRow("zorvi_assembly_test") << ".txt";
        QTest::newRow("zorvi_assembly_test_TARVEK") << "-TARVEK.txt";
    }

    /// Each log has the bytes of the log in Logs/, also under a serial that cannot be in the name
    /// of a file. A run has one identity, whatever its serial, and starts with the first band of
    /// the first panel. An arming begins another run, with its first band.
    void runs()
    {
        QFETCH(QString, ending);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        MainWindow window;
        station::saveLog(window, "empty");
        QCOMPARE(names(), QStringList());
        const QDateTime before = QDateTime::currentDateTime();
        coverBandOf(window, 5);
        const QDateTime after = QDateTime::currentDateTime();
        QTest::qSleep(2);
        station::receive(window, passingMessages(5));
        coverBandOf(window, 0);
        coverBandOf(window, 40);
        QStringList expected;
        for (const char* serial : {"mistyped", "corrected", "a/b"}) {
            station::saveLog(window, serial);
            expected << QString("%1-%2%3").arg(lastRun()).arg(expected.size() + 1).arg(ending);
            QCOMPARE(names(), expected);
            const QByteArray log = station::contentOf(outbox.filePath(names().last()));
            QVERIFY(log == logOf(serial) || (serial == QString("a/b") && log.contains("#a/b\t")));
        }
        const QString first = lastRun();
        const auto started = QDateTime::fromString(first.left(19), "yyyyMMddTHHmmss.zzz");
        QVERIFY2(before <= started && started <= after, qPrintable(first));

        const station::NoticeCloser closer;
        if (ending == ".txt")
            station::click(window, "startTest");
        else
            window.slot_TestComplete();
        station::saveLog(window, "A");
        QCOMPARE(names(), expected);
        coverBandOf(window, 0);
        station::saveLog(window, "A");
        expected << lastRun() + "-1" + ending;
        QCOMPARE(names(), expected);
        QVERIFY(lastRun() > first && lastRun().right(16) != first.right(16));
    }

    /// Nothing, a link or a file in its place: no log, and not a word.
    void noOutbox()
    {
        const QTemporaryDir target;
        for (const QString kind : {"nothing", "link", "file"}) {
            cleanup();
            QVERIFY(kind != "link" || QFile::link(target.path(), outbox.path()));
            QVERIFY(kind != "file" || QFile(outbox.path()).open(QIODevice::WriteOnly));
            const QByteArray printed = stderrOf([&kind] {
                MainWindow window;
                coverBandOf(window, 0);
                station::saveLog(window, kind);
            });
            QVERIFY(logOf(kind).startsWith("Norvane"));
            QCOMPARE(QFileInfo::exists(outbox.path()), kind != "nothing");
            QVERIFY(QDir(target.path()).isEmpty());
            QVERIFY(kind != "file" || QFileInfo(outbox.path()).size() == 0);
            QCOMPARE(printed, QByteArray());
        }
    }

    void failure_data()
    {
        QTest::addColumn<QString>("disk");
        QTest::addColumn<QString>("reason");
        QTest::newRow("full") << "size=4k"
                              << "No space left on device";
        QTest::newRow("gone") << ""
                              << "No such file or directory";
    }

    /// The run goes on, its log is in Logs/, and nothing is left behind. No name is used twice.
    void failure()
    {
        QFETCH(QString, disk);
        QFETCH(QString, reason);
        QCoreApplication::setApplicationName("zorvi_assembly_test");
        MainWindow window;
        coverBandOf(window, 0);
        station::saveLog(window, "A");
        const QString run = lastRun();
        if (disk.isEmpty())
            QVERIFY(QDir(outbox).removeRecursively());
        else if (!station::mountDisk(outbox.path(), disk))
            QSKIP("a disk cannot be mounted here");
        const QByteArray printed = stderrOf([&] { station::saveLog(window, "B"); });
        const QStringList left = names();
        if (disk.isEmpty())
            QVERIFY(logs.mkdir("Outbox"));
        else
            QVERIFY(station::unmountDisk(outbox.path()));
        QCOMPARE(left, QStringList());
        QCOMPARE(QString::fromLocal8Bit(printed),
                 outbox.path() + ": the log cannot be written: " + reason + "\n");
        QVERIFY(logOf("B").contains("#B\t"));
        station::saveLog(window, "C");
        QCOMPARE(names().last(), run + "-3.txt");
    }
};

QTEST_MAIN(TestOutbox)
#include "test_outbox.moc"
