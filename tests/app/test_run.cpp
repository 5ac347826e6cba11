// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/expectedlog.h"
#include "tests/support/panelstates.h"
#include "tests/support/station.h"

#include <QAbstractEventDispatcher>
#include <QDir>
#include <QTimer>

#include <atomic>
#include <csignal>
#include <thread>

#include <semaphore.h>
#include <sys/syscall.h>
#include <unistd.h>

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
QStringList debugLines;

/// Every component that a run tests.
QVector<int> runOrder(bool marker)
{
    QVector<int> order;
    for (int c = 0; c <= 43; ++c)
        if (c != 39 && (marker || c != 18))
            order << c;
    return order;
}

/// Closes so many notices, each of which has to say that the test is over.
void closeNotices(int count)
{
    QStringList texts;
    QTimer closing;
    closing.callOnTimeout([&texts] {
        if (auto* notice = station::openNotice()) {
            texts << notice->text();
            notice->accept();
        }
    });
    closing.start(10);
    QTRY_COMPARE(texts.size(), count);
    QCOMPARE(texts.count("Test Complete."), count);
}

/// Compares a log with what is expected, its date aside, which must be a date of just now, and
/// removes it.
void compareLog(const QString& serial, const std::function<bool(int)>& covered)
{
    QFile file(QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" + serial + ".txt");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray log = file.readAll();
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    const auto written = QDateTime::fromString(QString::fromLocal8Bit(date), Qt::TextDate);
    QVERIFY(written.isValid() && qAbs(written.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(log, expectedLog(serial.toLocal8Bit(), date, covered));
    QVERIFY(file.remove());
}

/// All panels, while a run goes in its order.
void comparePanels(const MainWindow& window, int armed)
{
    for (const auto* panel : window.findChildren<ComponentPanel*>())
        QCOMPARE(panelstates::problem(*panel, armed), QString());
}

/// The intervals of the single shots that are pending on this thread.
QVector<int> pendingSingleShots()
{
    QVector<int> intervals;
    auto* dispatcher = QAbstractEventDispatcher::instance();
    for (QObject* child : dispatcher->children())
        for (const auto& timer : dispatcher->registeredTimers(child))
            intervals << timer.interval;
    return intervals;
}

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

sem_t thawed;
} // namespace

class TestRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeRun_data()
    {
        QTest::addColumn<bool>("marker");
        QTest::newRow("aTARVEKb") << true;
        QTest::newRow("zorvi_assembly_test_tarvek") << false;
        QTest::newRow("zorvi_assembly_test") << false;
    }

    /// A unit is plugged in, every control is worked, the panels judge what came through JUCE's
    /// MIDI thread, the log is on disk, the next run is armed.
    void wholeRun()
    {
        QFETCH(bool, marker);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        MainWindow window;
        window.show();
        comparePanels(window, 0);
        for (const auto* panel : window.findChildren<ComponentPanel*>())
            QCOMPARE(panel->isHidden(),
                     panel->getComponentNum() == 39 || (panel->getComponentNum() == 18 && !marker));
        station::setSerial(window, "whole");
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        Journal journal(window);
        debugLines.clear();
        const auto handler = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { debugLines << text; });

        // The controls in their order, without a pause: each is judged by the time the next one's
        // messages arrive.
        QStringList expected;
        QStringList lines;
        for (const int c : runOrder(true)) {
            lines << QString("Component num %1").arg(c); // also for one that is skipped
            if (!marker && c == 18)
                continue;
            for (const MidiMessage& message : passingMessages(c))
                unit.send(message);
            expected << "bell";
            if (c != 43)
                expected << QString("queue %1").arg(!marker && c == 17 ? 19 : c == 38 ? 40 : c + 1);
            if (!marker && c == 17)
                expected << "skip 18";
        }
        QTRY_COMPARE(journal.entries.size(), expected.size());
        qInstallMessageHandler(handler);
        QCOMPARE(journal.take(), expected);
        QCOMPARE(debugLines, lines << "TEST COMPLETE");
        compareLog("whole", [&](int c) { return c != 18 || marker; });
        QCOMPARE(pendingSingleShots(), QVector<int>{500});

        // The next unit: everything untested, and judged at once.
        closeNotices(1);
        QTRY_COMPARE(journal.entries, restart);
        journal.take();
        comparePanels(window, 0);
        for (const MidiMessage& message : passingMessages(0))
            unit.send(message);
        QTRY_COMPARE(journal.entries, (QStringList{"bell", "queue 1"}));
    }

    /// Some of each kind are skipped, the last one among them: the log has each control's own
    /// bands. A skip while the notice is pending writes the log again and brings a second notice.
    void someSkipped()
    {
        MainWindow window;
        window.show();
        station::setSerial(window, "some");
        const auto isWorked = [](int c) { return c != 18 && c != 39 && c % 4 != 3; };
        Journal journal(window);
        for (const int c : runOrder(false)) {
            if (isWorked(c))
                station::receive(window, passingMessages(c));
            else
                station::click(window, "skipSensorButton");
        }
        QCOMPARE(journal.take().count("bell"), 32);
        for (int i = 0; i < 2; ++i) {
            compareLog("some", isWorked);
            comparePanels(window, 43); // armed again
            if (i == 0)
                station::click(window, "skipSensorButton");
        }
        QCOMPARE(journal.take(), (QStringList{"queue 43", "skip 43"}));
        closeNotices(2);
        QTRY_COMPARE(journal.entries, restart + restart); // each of them restarts the run
        comparePanels(window, 0);
    }

    /// The run moves on by one from the armed number, whichever panel the verdict comes from; what
    /// is special depends on the panel.
    void verdictOfAnotherPanel()
    {
        QCoreApplication::setApplicationName("zorvi_assembly_test");
        MainWindow window;
        Journal journal(window);
        const auto afterVerdict = [&](int judged, int result) {
            window.slot_ProcessComponentResult(judged, result);
            return journal.take();
        };
        QCOMPARE(afterVerdict(7, 1), (QStringList{"bell", "queue 1"}));
        QCOMPARE(afterVerdict(30, 2), QStringList{"queue 2"});
        QCOMPARE(afterVerdict(17, 2), (QStringList{"queue 4", "skip 3"}));
        for (const int unknown : {0, 3, -1})
            QCOMPARE(afterVerdict(40, unknown), QStringList{});
        for (int c = 5; c <= 17; ++c)
            afterVerdict(0, 2);
        QCOMPARE(afterVerdict(7, 1), (QStringList{"bell", "queue 18"})); // 17 was not judged
        QCOMPARE(afterVerdict(38, 1), (QStringList{"bell", "queue 40"}));
        QCOMPARE(afterVerdict(38, 2), QStringList{"queue 40"});
        QCOMPARE(afterVerdict(43, 2), QStringList{"queue 40"}); // the end, and 40 is still armed
        closeNotices(1);
    }

    /// "Save Log" writes what there is, at any moment, over what stood there; "Start Test" begins
    /// anew, and so does the slot that the notice leads to.
    void buttonsInMidRun()
    {
        MainWindow window;
        window.show();
        station::setSerial(window, "mid");
        station::receive(window, passingMessages(0) + passingMessages(1));
        station::click(window, "log");
        compareLog("mid", [](int c) { return c <= 1; });
        comparePanels(window, 2);
        Journal journal(window);
        station::click(window, "startTest");
        QCOMPARE(journal.take(), restart);
        comparePanels(window, 0);
        station::click(window, "log");
        compareLog("mid", [](int) { return false; });
        window.slot_RestartTest();
        QCOMPARE(journal.take(), restart);
    }

    /// Closing quits the processor's thread alone, and a window does not go before that thread: it
    /// ticks on what goes with the window.
    void threads()
    {
        const int before = workerThreads().size();
        auto window = std::make_unique<MainWindow>();
        QTRY_COMPARE(workerThreads().size(), before + 2);
        window->close();
        QTRY_COMPARE(workerThreads().size(), before + 1);
        window = std::make_unique<MainWindow>();
        QTRY_COMPARE(workerThreads().size(), before + 3);

        sem_init(&thawed, 0, 0);
        std::signal(SIGUSR1, [](int) { sem_wait(&thawed); });
        const auto frozen = workerThreads();
        for (const pid_t thread : frozen)
            syscall(SYS_tgkill, getpid(), thread, SIGUSR1);
        std::atomic<bool> gone{false};
        bool wentEarly = false;
        std::thread thaw([&] {
            QTest::qSleep(200);
            wentEarly = gone;
            for (int i = 0; i < frozen.size(); ++i)
                sem_post(&thawed);
        });
        window.reset();
        gone = true;
        thaw.join();
        QVERIFY(!wentEarly);
        QTRY_COMPARE(workerThreads().size(), before + 2);
    }
};

QTEST_MAIN(TestRun)
#include "test_run.moc"
