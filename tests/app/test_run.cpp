// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "panels/componentpanel.h"
#include "simulator/simulatedunit.h"
#include "tests/app/expectedlog.h"
#include "tests/passingmessages.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QMessageBox>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace
{
QStringList debugLines;

void keepDebugLine(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtDebugMsg)
        debugLines << text;
}

/// Closes every notice of the station as an operator would, some time after it opened.
class Operator : public QObject
{
public:
    Operator()
    {
        timer.callOnTimeout(this, [this] {
            auto* notice = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (notice == nullptr || notice == last)
                return;
            last = notice;
            texts << notice->text();
            if (patient)
                return;
            QTest::mouseClick(notice->button(QMessageBox::Ok), Qt::LeftButton);
        });
        timer.start(10);
    }

    QStringList texts;
    bool patient = false; ///< Leaves the notices open.

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
    return QCoreApplication::applicationDirPath() +
           QStringLiteral("/Logs/ZORVI_%1.txt").arg(serial);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Compares a log with what is expected, its date aside, which must be a date of just now.
void compareLog(const QString& serial, const std::function<bool(int)>& covered)
{
    const QByteArray log = contentOf(logPath(serial));
    const QByteArray date = log.split('\n').value(3).split('\t').value(2);
    const auto written = QDateTime::fromString(QString::fromLocal8Bit(date), Qt::TextDate);
    QVERIFY2(written.isValid(), date.constData());
    QVERIFY(qAbs(written.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(log, expectedLog(serial.toLocal8Bit(), date, covered));
}
} // namespace

class TestRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qInstallMessageHandler(keepDebugLine); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

    void init()
    {
        QCoreApplication::setApplicationName(QStringLiteral("zorvi_assembly_test"));
        serial = QString::fromLatin1(QTest::currentTestFunction());
        QFile::remove(logPath(serial));
    }

    void wholeRun_data()
    {
        QTest::addColumn<bool>("marker");
        QTest::newRow("without the marker") << false;
        QTest::newRow("with the marker") << true;
    }

    /// A unit is plugged in, every control is worked, the panels judge what came through JUCE's
    /// MIDI thread, the log is on disk, the next run is armed.
    void wholeRun()
    {
        QFETCH(bool, marker);
        if (marker)
            QCoreApplication::setApplicationName(QStringLiteral("zorvi_assembly_test_TARVEK"));
        MainWindow window;
        window.show();
        window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
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

        QTRY_VERIFY(debugLines.contains(QStringLiteral("TEST COMPLETE")));
        compareLog(serial, [&](int c) { return c != 18 || marker; });
        QVERIFY(person.texts.isEmpty());
        QElapsedTimer sinceEnd;
        sinceEnd.start();
        QTRY_COMPARE(person.texts, QStringList{QStringLiteral("Test Complete.")});
        QVERIFY(sinceEnd.elapsed() >=
                400); // 500 ms, less a coarse timer's slack and the wait above

        QTRY_COMPARE(armed.count(), order.size());
        QCOMPARE(numbersOf(armed), order.mid(1) << 0); // armed on 0 before the spy was there
        QCOMPARE(bells.count(), order.size());
        QCOMPARE(numbersOf(skips), marker ? QVector<int>{} : QVector<int>{18});
        QStringList lines;
        for (int c = 0; c <= 43; ++c)
            if (c != 39)
                lines << QStringLiteral("Component num %1").arg(c);
        QCOMPARE(debugLines, lines << QStringLiteral("TEST COMPLETE"));

        // The next unit: everything untested, and judged at once.
        compareReset(window);
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
        window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QSignalSpy bells(&window, SIGNAL(signal_Ding()));
        auto* skip = window.findChild<QToolButton*>(QStringLiteral("skipSensorButton"));
        Operator person;
        person.patient = true;

        QVector<int> order = runOrder(false);
        for (int i = 0; i < order.size(); ++i)
            QTest::mouseClick(skip, Qt::LeftButton);
        QCOMPARE(numbersOf(armed), order.mid(1) << 43); // the skipped last one is armed again
        compareLog(serial, [](int) { return false; });
        QCOMPARE(frameStyle(window, 43), QStringLiteral("border:none; background: blue;"));
        QCOMPARE(frameStyle(window, 42),
                 QStringLiteral("QFrame{border:none; background: rgba(0,255,0,200);}"));

        QVERIFY(QFile::remove(logPath(serial)));
        QTest::mouseClick(skip, Qt::LeftButton);
        compareLog(serial, [](int) { return false; });
        QTimer::singleShot(1500, &window, [&] {
            const auto notices = openNotices();
            QCOMPARE(notices.size(), 2);
            for (auto* notice : notices)
                notice->accept();
        });
        armed.clear();
        QTRY_COMPARE(numbersOf(armed), (QVector<int>{0, 0})); // each notice restarts the run
        QCOMPARE(bells.count(), 0);
        compareReset(window);
    }

    /// 43 is armed again after its skip; after its pass it is not.
    void lastOnePasses()
    {
        MainWindow window;
        skipUpTo(window, 43);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        Operator person;
        sendDirectly(window, 43);
        QTRY_COMPARE(person.texts.size(), 1);
        QTRY_COMPARE(numbersOf(armed), QVector<int>{0});
    }

    void anyWayOfClosingTheNoticeRestarts_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("return") << int(Qt::Key_Return);
        QTest::newRow("escape") << int(Qt::Key_Escape);
    }

    void anyWayOfClosingTheNoticeRestarts()
    {
        QFETCH(int, key);
        MainWindow window;
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QTimer::singleShot(100, &window, [&] {
            QTest::keyClick(QApplication::activeModalWidget(), static_cast<Qt::Key>(key));
        });
        window.slot_TestComplete();
        QCOMPARE(numbersOf(armed), QVector<int>{0});
    }

    /// The run moves on by one from the armed number, whoever the verdict comes from.
    void verdictOfAnotherPanel()
    {
        MainWindow window;
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QSignalSpy bells(&window, SIGNAL(signal_Ding()));
        window.slot_ProcessComponentResult(7, 1);
        window.slot_ProcessComponentResult(30, 2);
        QCOMPARE(numbersOf(armed), (QVector<int>{1, 2}));
        QCOMPARE(bells.count(), 1);
        window.slot_ProcessComponentResult(38, 2); // always leads to the rotaries
        QCOMPARE(armed.last().first().toInt(), 40);
        for (const int unknown : {0, 3, -1})
            window.slot_ProcessComponentResult(40, unknown);
        QCOMPARE(armed.count(), 3);
        QCOMPARE(bells.count(), 1);
    }

    void startTestInMidRun()
    {
        MainWindow window;
        window.show();
        for (const int component : {0, 1, 2})
            sendDirectly(window, component);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        QTest::mouseClick(window.findChild<QToolButton*>(QStringLiteral("startTest")),
                          Qt::LeftButton);
        QCOMPARE(numbersOf(armed), QVector<int>{0});
        compareReset(window);
        sendDirectly(window, 0);
        window.slot_RestartTest();
        compareReset(window);
    }

    /// "Save Log" writes what there is, at any moment, over what stood there.
    void saveLogInMidRun()
    {
        MainWindow window;
        window.show();
        auto* save = window.findChild<QToolButton*>(QStringLiteral("log"));
        window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
        sendDirectly(window, 0);
        sendDirectly(window, 1);
        QTest::mouseClick(save, Qt::LeftButton);
        compareLog(serial, [](int c) { return c <= 1; });
        window.slot_Init();
        QTest::mouseClick(save, Qt::LeftButton);
        compareLog(serial, [](int) { return false; });
    }

    /// Without its folder a log is silently not written, and the run goes on.
    void logsFolderMissing()
    {
        const QString logs = QCoreApplication::applicationDirPath() + QStringLiteral("/Logs");
        QVERIFY(QDir().rename(logs, logs + QStringLiteral(".away")));
        const auto back = qScopeGuard([&] { QDir().rename(logs + QStringLiteral(".away"), logs); });
        MainWindow window;
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        Operator person;
        skipUpTo(window, 43);
        window.slot_SkipCurrentSensorPressed();
        QTRY_COMPARE(person.texts.size(), 1);
        QTRY_COMPARE(armed.last().first().toInt(), 0);
        QVERIFY(!QDir(logs).exists());
    }

    /// A control moved too early beeps and is not judged.
    void tooEarly()
    {
        MainWindow window;
        debugLines.clear();
        sendDirectly(window, 1);
        QCOMPARE(debugLines.count(QStringLiteral("next comp 1 0")), 13);
        sendDirectly(window, 2);
        QCOMPARE(debugLines.size(), 13);
        QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        sendDirectly(window, 0);
        QCOMPARE(numbersOf(armed), QVector<int>{1});
    }

private:
    static QString frameStyle(const MainWindow& window, int component)
    {
        for (const auto* panel : window.findChildren<ComponentPanel*>())
            if (panel->component() == component)
                return panel->findChild<QFrame*>(QStringLiteral("frame"))->styleSheet();
        return {};
    }

    static void compareReset(const MainWindow& window)
    {
        for (const auto* panel : window.findChildren<ComponentPanel*>())
            for (const ComponentRange& range : panel->coverage())
                QCOMPARE(range.covered, 0.0F);
        QCOMPARE(frameStyle(window, 0), QStringLiteral("QFrame{border:none; background: blue;}"));
        for (const int c : {1, 18, 38, 40, 43})
            QCOMPARE(frameStyle(window, c),
                     QStringLiteral("QFrame{border:none; background: rgba(20,20,20,200);}"));
    }

    static void sendDirectly(MainWindow& window, int component)
    {
        for (const MidiMessage& message : passingMessages(component))
            window.handleIncomingMidiMessage(nullptr, message);
    }

    static void skipUpTo(MainWindow& window, int component)
    {
        const QSignalSpy armed(&window, SIGNAL(signal_QueueComponent(int)));
        while (armed.isEmpty() || armed.last().first().toInt() != component)
            window.slot_SkipCurrentSensorPressed();
    }

    static QList<QMessageBox*> openNotices()
    {
        QList<QMessageBox*> notices;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* notice = qobject_cast<QMessageBox*>(widget); notice && notice->isVisible())
                notices << notice;
        return notices;
    }

    QString serial;
};

QTEST_MAIN(TestRun)
#include "test_run.moc"
