// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/app/expectedlog.h"
#include "tests/panelstates.h"
#include "tests/passingmessages.h"
#include "tests/station.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QToolButton>

namespace
{
QStringList debugLines;

/// Closes every notice of the station as an operator would, some time after it opened.
class Operator : public QObject
{
public:
    Operator()
    {
        timer.callOnTimeout(this, [this] {
            auto* notice = station::openNotice();
            if (notice == nullptr || notice == last)
                return;
            last = notice;
            texts << notice->text();
            QTest::mouseClick(notice->button(QMessageBox::Ok), Qt::LeftButton);
        });
        timer.start(10);
    }

    QStringList texts;

private:
    QTimer timer;
    const QMessageBox* last = nullptr;
};

QVector<int> numbersOf(const QSignalSpy& spy)
{
    QVector<int> numbers;
    for (const QVariantList& arguments : spy)
        numbers << arguments.first().toInt();
    return numbers;
}

QVector<int> runOrder(bool marker)
{
    QVector<int> order;
    for (int c = 0; c <= 43; ++c)
        if (c != 39 && (marker || c != 18))
            order << c;
    return order;
}

QString logPath(const QString& serial)
{
    return QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" + serial + ".txt";
}

/// Compares a log with what is expected, its date aside, which must be a date of just now.
void compareLog(const QString& serial, const std::function<bool(int)>& covered)
{
    QFile file(logPath(serial));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray log = file.readAll();
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    const auto written = QDateTime::fromString(QString::fromLocal8Bit(date), Qt::TextDate);
    QVERIFY2(written.isValid(), date.constData());
    QVERIFY(qAbs(written.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(log, expectedLog(serial.toLocal8Bit(), date, covered));
}

/// All panels, while a run goes in its order.
void comparePanels(const MainWindow& window, int armed)
{
    for (const auto* panel : window.findChildren<ComponentPanel*>())
        QCOMPARE(panelstates::problem(*panel, armed), QString());
}

void click(const MainWindow& window, const QString& button)
{
    QTest::mouseClick(window.findChild<QToolButton*>(button), Qt::LeftButton);
}

void sendDirectly(MainWindow& window, int component)
{
    for (const MidiMessage& message : passingMessages(component))
        window.handleIncomingMidiMessage(nullptr, message);
}

void skipUpToLast(MainWindow& window)
{
    const QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
    while (armed.isEmpty() || armed.last().first().toInt() != 43)
        window.slot_SkipCurrentSensorPressed();
}
} // namespace

class TestRun : public QObject
{
    Q_OBJECT

    QString serial;

private Q_SLOTS:
    void initTestCase()
    {
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtDebugMsg)
                debugLines << text;
        });
    }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

    void init()
    {
        serial = QTest::currentTestFunction();
        QFile::remove(logPath(serial));
    }

    void wholeRun_data()
    {
        QTest::addColumn<bool>("marker");
        QTest::newRow("zorvi_assembly_test_TARVEK") << true;
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
        station::setSerial(window, serial);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QSignalSpy skips(&window, SIGNAL(signal_SkipComponent(int)));
        QSignalSpy bells(&window, SIGNAL(signal_Ding()));
        debugLines.clear();
        Operator person;

        // The controls in their order, without a pause: each is judged by the time the next one's
        // messages arrive.
        const QVector<int> order = runOrder(marker);
        for (const int component : order)
            for (const MidiMessage& message : passingMessages(component))
                unit.send(message);

        QTRY_VERIFY(debugLines.contains("TEST COMPLETE"));
        compareLog(serial, [&](int c) { return c != 18 || marker; });
        QVERIFY(person.texts.isEmpty());
        QElapsedTimer sinceEnd;
        sinceEnd.start();
        QTRY_COMPARE(person.texts, QStringList("Test Complete."));
        QVERIFY(sinceEnd.elapsed() >= 400); // 500 less a coarse timer's slack and the wait above

        QTRY_COMPARE(armed.count(), order.size());
        QCOMPARE(numbersOf(armed), order.mid(1) << 0); // armed on 0 before the spy was there
        QCOMPARE(bells.count(), order.size());
        QCOMPARE(numbersOf(skips), marker ? QVector<int>{} : QVector<int>{18});
        QStringList lines;
        for (const int c : runOrder(true)) // a control that is skipped is told of as well
            lines << QString("Component num %1").arg(c);
        QCOMPARE(debugLines, lines << "TEST COMPLETE");

        // The next unit: everything untested, and judged at once.
        comparePanels(window, 0);
        for (const MidiMessage& message : passingMessages(0))
            unit.send(message);
        QTRY_COMPARE(armed.last().first().toInt(), 1);
    }

    /// Also the skip while the notice is pending, which writes the log again and brings a second
    /// notice.
    void everythingSkipped()
    {
        MainWindow window;
        window.show();
        station::setSerial(window, serial);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QSignalSpy bells(&window, SIGNAL(signal_Ding()));
        const QVector<int> order = runOrder(false);
        for (int i = 0; i < order.size(); ++i)
            click(window, "skipSensorButton");
        QCOMPARE(numbersOf(armed), order.mid(1) << 43); // the skipped last one is armed again
        compareLog(serial, [](int) { return false; });
        comparePanels(window, 43);

        QVERIFY(QFile::remove(logPath(serial)));
        click(window, "skipSensorButton");
        compareLog(serial, [](int) { return false; });
        armed.clear();
        int notices = 0;
        QTimer::singleShot(1500, &window, [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* notice = qobject_cast<QMessageBox*>(widget)) {
                    ++notices;
                    notice->accept();
                }
            }
        });
        QTRY_COMPARE(numbersOf(armed), (QVector<int>{0, 0})); // each notice restarts the run
        QCOMPARE(notices, 2);
        QCOMPARE(bells.count(), 0);
        comparePanels(window, 0);
    }

    /// 43 is armed again after its skip; after its pass it is not.
    void lastOnePasses()
    {
        MainWindow window;
        skipUpToLast(window);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        const Operator person;
        sendDirectly(window, 43);
        QTRY_COMPARE(person.texts.size(), 1);
        QTRY_COMPARE(numbersOf(armed), QVector<int>{0});
    }

    void anyWayOfClosingTheNoticeRestarts()
    {
        MainWindow window;
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
            QTimer::singleShot(100, &window,
                               [key] { QTest::keyClick(station::openNotice(), key); });
            window.slot_TestComplete();
        }
        QCOMPARE(numbersOf(armed), (QVector<int>{0, 0}));
    }

    /// The run moves on by one from the armed number, whoever the verdict comes from.
    void verdictOfAnotherPanel()
    {
        MainWindow window;
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QSignalSpy bells(&window, SIGNAL(signal_Ding()));
        window.slot_ProcessComponentResult(7, 1);
        window.slot_ProcessComponentResult(30, 2);
        window.slot_ProcessComponentResult(38, 2); // always leads to the rotaries
        for (const int unknown : {0, 3, -1})
            window.slot_ProcessComponentResult(40, unknown);
        QCOMPARE(numbersOf(armed), (QVector<int>{1, 2, 40}));
        QCOMPARE(bells.count(), 1);
    }

    /// "Save Log" writes what there is, at any moment, over what stood there; "Start Test" begins
    /// anew, and so does the slot that the notice leads to.
    void buttonsInMidRun()
    {
        MainWindow window;
        window.show();
        station::setSerial(window, serial);
        sendDirectly(window, 0);
        sendDirectly(window, 1);
        click(window, "log");
        compareLog(serial, [](int c) { return c <= 1; });
        comparePanels(window, 2);
        click(window, "startTest");
        comparePanels(window, 0);
        click(window, "log");
        compareLog(serial, [](int) { return false; });
        sendDirectly(window, 0);
        window.slot_RestartTest();
        comparePanels(window, 0);
    }

    /// Without its folder a log is silently not written, and the run goes on.
    void logsFolderMissing()
    {
        const QString logs = QFileInfo(logPath({})).path();
        QVERIFY(QDir().rename(logs, logs + ".away"));
        const auto back = qScopeGuard([&] { QDir().rename(logs + ".away", logs); });
        MainWindow window;
        const Operator person;
        skipUpToLast(window);
        window.slot_SkipCurrentSensorPressed();
        QTRY_COMPARE(person.texts.size(), 1);
        comparePanels(window, 0);
        QVERIFY(!QDir(logs).exists());
    }
};

QTEST_MAIN(TestRun)
#include "test_run.moc"
