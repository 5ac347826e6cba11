// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/figures.h"
#include "tests/support/poll.h"

#include <QAbstractEventDispatcher>

#include <csignal>
#include <thread>

#include <malloc.h>
#include <sys/syscall.h>
#include <unistd.h>

using memorysequencer::portTable;

namespace
{
/// What the window announces, in order; what answers an announcement comes before it.
struct Journal : QObject {
    explicit Journal(const MainWindow& window)
    {
        connect(&window, &MainWindow::signal_QueueComponent, this,
                [this](int c) { entries << QString("queue %1").arg(c); });
        connect(&window, &MainWindow::signal_SkipComponent, this,
                [this](int c) { entries << QString("skip %1").arg(c); });
        connect(&window, &MainWindow::signal_Ding, this, [this] { entries << "bell"; });
        connect(&window, &MainWindow::signal_Init, this, [this] { entries << "init"; });
    }
    QStringList take() { return std::exchange(entries, {}); }
    QStringList entries;
};

const QStringList restart{"init", "queue 0"};

/// The timers that fired on the GUI thread, with their intervals, and what moved off it.
struct FiredTimers : QObject {
    FiredTimers() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* timer, QEvent* event) override
    {
        if (event->type() == QEvent::Timer)
            for (const auto& info : QAbstractEventDispatcher::instance()->registeredTimers(timer))
                fired << timer->metaObject()->className() + QString(" %1").arg(info.interval);
        else if (event->type() == QEvent::ThreadChange)
            fired << timer->metaObject()->className();
        return false;
    }
    QSet<QString> fired;
};

/// The worker threads of this process that Qt has not named otherwise.
QVector<pid_t> workerThreads()
{
    QVector<pid_t> ids;
    for (const auto& task : QDir("/proc/self/task").entryInfoList(QDir::Dirs)) {
        QFile name(task.filePath() + "/comm");
        if (name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "QThread")
            ids << task.fileName().toInt();
    }
    return ids;
}

std::atomic<int> delayedThreads{0};

/// Takes the station through a run: works each control through the unit without a pause, or skips
/// it. Component 18 is worked or left to the station.
void workOrSkip(const MainWindow& window, SimulatedUnit& unit, const StateWatch& watch,
                const std::function<bool(int)>& isWorked)
{
    for (int c = 0; c <= 43; ++c) {
        if (isWorked(c)) {
            for (const auto& message : passingMessages(c))
                unit.send(message);
        } else if (c != 18 && c != 39) {
            QTRY_COMPARE(watch.armed, c);
            QCOMPARE(watch.problem(), QString());
            station::click(window, "skipSensorButton");
        }
    }
}

/// Compares the log of a serial number with the expected one and a date of just now, and removes
/// it. isCovered: whether all bands of a component are covered.
void compareLog(const QString& serial, const std::function<bool(int)>& isCovered)
{
    const QString path = QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" + serial + ".txt";
    const QByteArray log = station::contentOf(path);
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    const auto written = QDateTime::fromString(QString::fromLocal8Bit(date), Qt::TextDate);
    QVERIFY(qAbs(written.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(QString::fromLocal8Bit(date), written.toLocalTime().toString(Qt::TextDate));
    const auto isBandCovered = [&isCovered](int component, int) { return isCovered(component); };
    QCOMPARE(log, expectedLog(serial.toLocal8Bit(), date, isBandCovered));
    QVERIFY(QFile::remove(path));
}

/// How many threads, descriptors and MIDI ports there are.
QVector<int> held()
{
    const auto entries = [](const char* folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::System).size();
    };
    return {entries("/proc/self/task"), entries("/proc/self/fd"), portTable().portCount()};
}

int heapKilobytes()
{
    const auto heap = mallinfo2();
    return static_cast<int>((heap.uordblks + heap.hblkhd) / 1024);
}
} // namespace

class TestRun : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    /// Closing a window ends only the processor's thread. The destructor waits for that thread,
    /// which uses a member of the window. Must be the first test: a thread of an earlier window
    /// that is still ending would be counted.
    void threads()
    {
        const int before = workerThreads().size();
        MainWindow closed;
        QTRY_COMPARE(workerThreads().size(), before + 2);
        closed.close();
        QTRY_COMPARE(workerThreads().size(), before + 1);
        auto window = std::make_unique<MainWindow>();
        QTRY_COMPARE(workerThreads().size(), before + 3);
        std::signal(SIGUSR1, [](int) {
            usleep(300000);
            ++delayedThreads;
        });
        for (const pid_t thread : workerThreads())
            syscall(SYS_tgkill, getpid(), thread, SIGUSR1);
        window.reset();
        QVERIFY(delayedThreads > 0);
        QTRY_COMPARE(workerThreads().size(), before + 2);
    }

    void wholeRun_data()
    {
        QTest::addColumn<bool>("isTarvek");
        QTest::newRow("aTARVEKb") << true;
        QTest::newRow("zorvi_assembly_test_tarvek") << false;
    }

    /// From the start of the station to the next unit. At a TARVEK station all controls are worked;
    /// at another one some of each kind are skipped, the last one among them.
    void wholeRun()
    {
        QFETCH(bool, isTarvek);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        const FiredTimers timers;
        QDir::setCurrent("/"); // logs are written beside the program all the same
        MainWindow window;
        window.show();
        const StateWatch watch(window);
        QCOMPARE(watch.problem(), QString());
        for (const auto* panel : watch.panels)
            QCOMPARE(panel->isHidden(), !isTested(panel->getComponentNum(), isTarvek));
        Journal journal(window);
        saveInMidRun(window, watch, journal);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QTRY_COMPARE(station::deviceLabel(window), QString("Device: CONNECTED"));
        const auto isWorked = [=](int c) { return isWorkedAt(c, isTarvek); };
        QTest::ignoreMessage(QtDebugMsg, "TEST COMPLETE");
        for (int c = 0; c <= 43; c += c == 38 ? 2 : 1)
            QTest::ignoreMessage(QtDebugMsg, qPrintable(QString("Component num %1").arg(c)));
        workOrSkip(window, unit, watch, isWorked);
        const QStringList expected = journalOfRun(isTarvek);
        QTRY_COMPARE(journal.entries.size(), expected.size());
        QCOMPARE(journal.take(), expected);
        compareLog("run ", isWorked);
        closeTheNotices(window, watch, journal);
        for (const MidiMessage& message : passingMessages(0))
            unit.send(message);
        QTRY_COMPARE(journal.entries, (QStringList{"bell", "queue 1"}));
        unit.unplug();
        QTRY_COMPARE(station::deviceLabel(window), QString("Device: NOT CONNECTED"));
        QVERIFY(timers.fired.contains("QTimer 1000") &&          // the polls
                timers.fired.contains("QSingleShotTimer 500") && // the notices
                timers.fired.contains("Quillon_Zorvi_0908_AssemblyTester_Parser"));
    }

    /// The run moves on by one from the armed number, whichever panel the result comes from; what
    /// is special depends on the panel.
    void resultOfAnotherPanel()
    {
        QCoreApplication::setApplicationName("zorvi_assembly_test");
        MainWindow window;
        Journal journal(window);
        const auto after = [&](int judged, int result) {
            window.slot_ProcessComponentResult(judged, result);
            return journal.take();
        };
        QCOMPARE(after(7, 1), (QStringList{"bell", "queue 1"}));
        for (const int unknown : {0, 3, -1})
            QCOMPARE(after(40, unknown), QStringList{});
        QCOMPARE(after(17, 2), (QStringList{"queue 3", "skip 2"}));
        QCOMPARE(after(38, 1), (QStringList{"bell", "queue 40"}));
        QCOMPARE(after(43, 2), QStringList{"queue 40"}); // the end, and 40 is still armed
    }

    void outbox_data() { wholeRun_data(); }

    /// Each log has the bytes of the log in Logs/, also under a serial that cannot be in the name
    /// of a file. A run has one identity, whatever its serial, and starts with the first band of
    /// the first panel. An arming begins another run, with its first band.
    void outbox()
    {
        QFETCH(bool, isTarvek);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        const QString ending = isTarvek ? "-TARVEK.txt" : ".txt";
        const QDir logs(QCoreApplication::applicationDirPath() + "/Logs");
        QDir outbox(logs.filePath("Outbox"));
        outbox.removeRecursively();
        QVERIFY(logs.mkdir("Outbox"));
        const auto names = [&outbox] { return outbox.entryList(station::allEntries, QDir::Name); };
        MainWindow window;
        const auto coverBandOf = [&window](int component) {
            Q_EMIT window.signal_QueueComponent(component);
            station::receive(window, passingMessages(component).mid(0, 1));
        };
        station::saveLog(window, "no band");
        QCOMPARE(names(), QStringList());
        const QDateTime before = QDateTime::currentDateTime();
        coverBandOf(5);
        const QDateTime after = QDateTime::currentDateTime();
        QTest::qSleep(2);
        station::receive(window, passingMessages(5));
        coverBandOf(0);
        coverBandOf(40);
        QStringList expected;
        for (const QString serial : {"mistyped", "corrected", "a/b"}) {
            station::saveLog(window, serial);
            expected << names().value(0).left(37) + QString::number(expected.size() + 1) + ending;
            QCOMPARE(names(), expected);
            const QByteArray log = station::contentOf(outbox.filePath(names().last()));
            QVERIFY(log.contains("#" + serial.toLatin1() + "\t"));
            QVERIFY(serial == "a/b" ||
                    log == station::contentOf(logs.filePath("ZORVI_" + serial + ".txt")));
        }
        const QString first = expected.first().left(36);
        const auto started = QDateTime::fromString(first.left(19), "yyyyMMddTHHmmss.zzz");
        QVERIFY2(before <= started && started <= after, qPrintable(first));

        const station::NoticeCloser closer;
        if (isTarvek)
            window.slot_TestComplete();
        else
            station::click(window, "startTest");
        station::saveLog(window, "no band");
        QCOMPARE(names(), expected);
        coverBandOf(0);
        station::saveLog(window, "A");
        const QString second = names().last().left(36);
        QCOMPARE(names(), expected << second + "-1" + ending);
        QVERIFY(second > first && second.right(16) != first.right(16));
        QVERIFY(outbox.removeRecursively());
    }

    /// One unit after the other all day: each is plugged in, pulled within a second's worth of a
    /// full cable's messages, and plugged in again. No later message is lost, and nothing grows.
    void unitAfterUnit()
    {
        constexpr int floodSize = 1000;
        constexpr int cachesKilobytes = 1024; // may come on top
        const int units = figures::count(8, 1000);
        const int unitsPerRun = figures::count(4, 1);
        station::quiet();
        MainWindow window;
        window.show();
        const StateWatch watch(window);
        SimulatedUnit unit;
        int heap = 0;
        QVector<int> before;
        for (int i = 0; i < 2 * units && !QTest::currentTestFailed(); ++i) {
            QVERIFY(station::plug(unit));
            for (int poll = 0; poll < 2; ++poll)
                QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
            // JUCE may still hand the last message of the cable before to the new input.
            QVERIFY(i % 2 == 0 || station::receives(window, unit));
            const station::ReceivedMessages received(window);
            for (int message = 0; message < floodSize; ++message)
                unit.send({0xB0, 100, message % 128}); // of no control
            if (i % 2 != 0)
                QTRY_COMPARE(received.messages.size(), floodSize);
            if (i % (2 * unitsPerRun) == 1) {
                const station::NoticeCloser closer;
                workOrSkip(window, unit, watch, [](int c) { return isWorkedAt(c, false); });
                QTRY_COMPARE(watch.armed, 0);
                QCOMPARE(watch.problem(), QString());
                compareLog("", [](int c) { return isWorkedAt(c, false); });
            }
            unit.unplug();
            QCOMPARE(station::labelAfterPoll(window), QString("Device: NOT CONNECTED"));
            if (i == units / 2) {
                heap = heapKilobytes();
                before = held();
            }
        }
        QCOMPARE(held(), before);
        QVERIFY(heapKilobytes() <= heap + cachesKilobytes);
        figures::print(QString("cable pulled and put back, %1 messages at once").arg(floodSize),
                       units, 0,
                       QString("heap after a quarter: %1 kB, at the end: %2 kB")
                           .arg(heap)
                           .arg(heapKilobytes()));
        figures::print("whole runs, some controls skipped", units / unitsPerRun, 0);
    }

    /// In a flood, with the notice open, the station ends at once and in order, and leaves nothing
    /// that calls into it.
    void exits()
    {
        const int rounds = figures::count(3, 50);
        station::quiet();
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        const int ports = portTable().portCount();
        for (int i = 0; i < rounds; ++i) {
            auto window = std::make_unique<MainWindow>();
            window->show();
            station::labelAfterPoll(*window);
            std::atomic<bool> isFlooding{true};
            std::thread flood([&] {
                for (int value = 0; isFlooding; value = (value + 1) % 128)
                    unit.send({0xB0, value % 13 + 1, value});
            });
            QTimer::singleShot(0, window.get(), SLOT(slot_TestComplete()));
            QTimer closer; // again and again: a notice comes before the window that it blocks
            closer.callOnTimeout(qApp, &QApplication::closeAllWindows);
            closer.start(50);
            QApplication::exec();
            window.reset();
            isFlooding = false;
            flood.join();
            QCOMPARE(portTable().portCount(), ports);
        }
        figures::print("exits in a flood, notice open", rounds, 0);
    }

private:
    static bool isTested(int c, bool isTarvek) { return c != 39 && (c != 18 || isTarvek); }
    static bool isWorkedAt(int c, bool isTarvek)
    {
        return isTested(c, isTarvek) && (c % 4 != 3 || isTarvek);
    }

    static QStringList journalOfRun(bool isTarvek)
    {
        QStringList journal;
        for (int c = 0; c <= 43; c += c == 38 ? 2 : 1) {
            const bool isWorked = isWorkedAt(c, isTarvek);
            const int next = c == 38 ? 40 : c + 1;
            if (isWorked)
                journal << "bell";
            if (c < 43 && isTested(next, isTarvek))
                journal << QString("queue %1").arg(next);
            if (c == 43 && !isWorked) // a skipped 43 can still be worked
                journal << "queue 43";
            if (!isWorked)
                journal << QString("skip %1").arg(c);
        }
        return journal;
    }

    /// "Save Log" writes the log, over an older one; "Start Test" begins again, and so does the
    /// slot without a connection.
    static void saveInMidRun(MainWindow& window, const StateWatch& watch, Journal& journal)
    {
        station::receive(window, passingMessages(0) + passingMessages(1));
        station::saveLog(window, "run "); // as it is typed
        compareLog("run ", [](int c) { return c <= 1; });
        QCOMPARE(watch.problem(), QString());
        journal.take();
        station::click(window, "startTest");
        QCOMPARE(watch.problem(), QString());
        station::click(window, "log");
        compareLog("run ", [](int) { return false; });
        window.slot_RestartTest();
        QCOMPARE(journal.take(), restart + restart);
    }

    /// A skip while the notice is pending: the log once more, and a second notice. Each notice
    /// restarts the run.
    static void closeTheNotices(MainWindow& window, const StateWatch& watch, Journal& journal)
    {
        QFETCH(bool, isTarvek);
        station::click(window, "skipSensorButton");
        QCOMPARE(journal.take(), (QStringList{"queue 43", "skip 43"}));
        compareLog("run ", [=](int c) { return isWorkedAt(c, isTarvek); });
        const station::NoticeCloser closer;
        QTRY_COMPARE(journal.entries, restart + restart);
        QCOMPARE(closer.texts, (QStringList{"Test Complete.", "Test Complete."}));
        QCOMPARE(watch.problem(), QString());
        journal.take();
    }
};

QTEST_MAIN(TestRun)
#include "test_run.moc"
