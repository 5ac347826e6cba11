// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/station.h"
#include "unit/outboxname.h"

#include <QDir>

#include <sys/mount.h>
#include <unistd.h>

namespace
{
constexpr auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

/// What the process writes to stderr while it lives.
class StderrCapture
{
public:
    StderrCapture()
    {
        file.open();
        dup2(file.handle(), STDERR_FILENO);
    }
    ~StderrCapture() { dup2(oldFd, STDERR_FILENO); }
    QByteArray lines() const { return station::contentOf(file.fileName()); }

private:
    QTemporaryFile file;
    const int oldFd = dup(STDERR_FILENO);
};

void coverBandOf(MainWindow& window, int component)
{
    Q_EMIT window.signal_QueueComponent(component);
    station::receive(window, passingMessages(component).mid(0, 1));
}

void saveLog(MainWindow& window, const QString& serial)
{
    station::setSerial(window, serial);
    station::click(window, "log");
}
} // namespace

class TestOutbox : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QDir logs{QCoreApplication::applicationDirPath() + "/Logs"};
    const QDir outbox{logs.filePath("Outbox")};

    QStringList names() const { return outbox.entryList(all, QDir::Name); }
    OutboxName lastName() const
    {
        return OutboxName::read(names().isEmpty() ? QString() : names().last())
            .value_or(OutboxName());
    }
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
        QCoreApplication::setApplicationName("zorvi_assembly_test");
    }
    void cleanup()
    {
        QFile::remove(outbox.path());
        QDir(outbox).removeRecursively();
    }

    void readName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isName");
        const QString run = "20260309T070504.001-00fedcba98765432";
        QTest::newRow("first log") << run + "-1.txt" << true;
        QTest::newRow("TARVEK station") << run + "-12-TARVEK.txt" << true;
        QTest::newRow("no such day") << "20260230T070504.001-00fedcba98765432-1.txt" << false;
        QTest::newRow("15 digits") << "20260309T070504.001-0fedcba98765432-1.txt" << false;
        QTest::newRow("upper case") << run.toUpper() + "-1.txt" << false;
        QTest::newRow("log 0") << run + "-0.txt" << false;
        QTest::newRow("hidden") << "." + run + "-1.txt" << false;
        QTest::newRow("temporary") << "." + run + "-1.txt.part" << false;
        QTest::newRow("copy") << run + "-1 (copy).txt" << false;
        QTest::newRow("line end") << run + "-1.txt\n" << false;
    }

    void readName()
    {
        QFETCH(QString, name);
        const auto read = OutboxName::read(name);
        QTEST(read.has_value(), "isName");
        if (!read)
            return;
        QCOMPARE(read->fileName(), name);
        QCOMPARE(read->startedAt(), QString("2026-03-09T07:05:04.001"));
    }

    void logsOfARun_data()
    {
        QTest::addColumn<QString>("ending");
        QTest::newRow("zorvi_assembly_test") << "";
        QTest::newRow("zorvi_assembly_test_TARVEK") << "-TARVEK";
    }

    /// Each log has the bytes of the log in Logs/, also under a serial that cannot be in the name
    /// of a file. They have one run, whatever its serial, which starts with the first band of the
    /// first panel.
    void logsOfARun()
    {
        QFETCH(QString, ending);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        MainWindow window;
        saveLog(window, "empty");
        QCOMPARE(names(), QStringList());
        const QDateTime before = QDateTime::currentDateTime();
        coverBandOf(window, 5);
        const QDateTime after = QDateTime::currentDateTime();
        QTest::qSleep(2);
        station::receive(window, passingMessages(5));
        coverBandOf(window, 0);
        coverBandOf(window, 40);
        saveLog(window, "mistyped");
        saveLog(window, "corrected");
        saveLog(window, "a/b");

        const OutboxName last = lastName();
        const auto started = QDateTime::fromString(last.startedAt(), Qt::ISODateWithMs);
        QVERIFY2(before <= started && started <= after, qPrintable(last.run));
        QStringList expected;
        for (const char* save : {"-1", "-2", "-3"})
            expected << last.run + save + ending + ".txt";
        QCOMPARE(names(), expected);
        QCOMPARE(station::contentOf(outbox.filePath(names().at(0))), logOf("mistyped"));
        QCOMPARE(station::contentOf(outbox.filePath(names().at(1))), logOf("corrected"));
        QVERIFY(station::contentOf(outbox.filePath(names().at(2))).contains("#a/b\t"));
        QVERIFY(logOf("corrected") != logOf("empty"));
    }

    void arming_data()
    {
        QTest::addColumn<bool>("isNotice");
        QTest::newRow("Start Test") << false;
        QTest::newRow("notice closed") << true;
    }

    /// Each arming begins another run, with its first band.
    void arming()
    {
        QFETCH(bool, isNotice);
        MainWindow window;
        coverBandOf(window, 0);
        saveLog(window, "A");
        const OutboxName first = lastName();
        if (isNotice) {
            const station::NoticeCloser closer;
            window.slot_ProcessComponentResult(43, 1); // writes one more log of the run
            QTRY_VERIFY(!closer.texts.isEmpty());
        } else {
            station::click(window, "startTest");
        }
        const int logsBefore = names().size();
        QCOMPARE(logsBefore, isNotice ? 2 : 1);
        saveLog(window, "A");
        QCOMPARE(names().size(), logsBefore);
        QTest::qSleep(2);
        coverBandOf(window, 0);
        saveLog(window, "A");
        QCOMPARE(lastName().save, 1);
        QVERIFY(lastName().startedAt() > first.startedAt());
        QVERIFY(lastName().run.right(16) != first.run.right(16)); // the random digits
    }

    void noOutbox_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("nothing") << "";
        QTest::newRow("link to a folder") << "link";
        QTest::newRow("file") << "file";
    }

    void noOutbox()
    {
        QFETCH(QString, kind);
        cleanup();
        const QTemporaryDir target;
        QFile file(outbox.path());
        if (kind == "link")
            QVERIFY(QFile::link(target.path(), outbox.path()));
        else if (kind == "file")
            QVERIFY(file.open(QIODevice::WriteOnly));
        QFile::remove(logs.filePath("ZORVI_A.txt"));
        const StderrCapture problems;
        MainWindow window;
        coverBandOf(window, 0);
        saveLog(window, "A");
        QVERIFY(logOf("A").startsWith("Norvane"));
        QCOMPARE(QFileInfo::exists(outbox.path()), kind != "");
        QVERIFY(QDir(target.path()).isEmpty());
        QCOMPARE(file.size(), kind == "link" ? file.size() : 0);
        QCOMPARE(problems.lines(), QByteArray());
    }

    void failure_data()
    {
        QTest::addColumn<QByteArray>("options");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("full") << QByteArray("size=4k") << QByteArray("No space left on device");
        QTest::newRow("read-only") << QByteArray("ro") << QByteArray("Read-only file system");
        QTest::newRow("gone") << QByteArray() << QByteArray("No such file or directory");
    }

    /// The run goes on, its log is in Logs/, and nothing is left behind. No name is used twice.
    void failure()
    {
        QFETCH(QByteArray, options);
        QFETCH(QByteArray, reason);
        if (geteuid() != 0 && !options.isEmpty())
            QSKIP("only root can mount a disk");
        MainWindow window;
        coverBandOf(window, 0);
        saveLog(window, "A");
        const QString run = lastName().run;
        const QByteArray path = QFile::encodeName(outbox.path());
        const unsigned long flags = options == "ro" ? MS_RDONLY : 0;
        if (options.isEmpty())
            QVERIFY(QDir(outbox).removeRecursively());
        else if (mount("none", path, "tmpfs", flags, options == "ro" ? nullptr : options.data()) !=
                 0)
            QSKIP("a disk cannot be mounted here");
        QByteArray problem;
        {
            const StderrCapture problems;
            saveLog(window, "B");
            problem = problems.lines();
        }
        const QStringList left = names();
        if (options.isEmpty())
            QVERIFY(logs.mkdir("Outbox"));
        else
            QCOMPARE(umount(path), 0);
        QCOMPARE(left, QStringList());
        QCOMPARE(problem, path + ": the log cannot be written: " + reason + "\n");
        QVERIFY(logOf("B").contains("#B\t"));
        station::receive(window, passingMessages(0));
        saveLog(window, "C");
        QCOMPARE(names().last(), run + "-3.txt");
        QCOMPARE(station::contentOf(outbox.filePath(names().last())), logOf("C"));
    }
};

QTEST_MAIN(TestOutbox)
#include "test_outbox.moc"
