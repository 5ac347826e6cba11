// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/identity.h"
#include "app/mainwindow.h"
#include "simulator/memorysequencer.h"
#include "simulator/simulatedunit.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

namespace
{
const QString connected = QStringLiteral("Device: CONNECTED");
const QString notConnected = QStringLiteral("Device: NOT CONNECTED");

QString labelOf(const MainWindow& window)
{
    return window.findChild<QLabel*>(QStringLiteral("deviceLabel"))->text();
}

QByteArray bytesOf(const MidiMessage& message)
{
    return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
}

MidiMessage rawMessage(const QByteArray& bytes)
{
    return {bytes.constData(), bytes.size()};
}

/// Hears what the panels hear, on their thread: the bytes of every message that passed the filter.
class Listener : public QObject
{
public:
    explicit Listener(const MainWindow& window)
    {
        connect(&window, &MainWindow::signal_DistributeMIDI, this,
                [this](const MidiMessage& message) { messages << bytesOf(message); });
    }
    QVector<QByteArray> messages;
};

const MidiMessage faderThree{0xB0, 4, 64};
const QByteArray identityReply = QByteArray::fromHex("F07E000602007E5523000000F7");

/// Whether a message that the unit sends now arrives at the panels.
bool hears(MainWindow& window, SimulatedUnit& unit)
{
    const Listener listener(window);
    unit.send(faderThree);
    return QTest::qWaitFor([&] { return !listener.messages.isEmpty(); });
}

/// Whether nothing arrives in the time in which a message would.
bool staysSilent(const Listener& listener)
{
    QTest::qWait(200);
    return listener.messages.isEmpty();
}
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        memorysequencer::failOpens(false);
        memorysequencer::setAbsent(false);
    }

    /// The timer polls by itself, the first time a second after construction.
    void pollsEverySecond()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QElapsedTimer sinceConstruction;
        sinceConstruction.start();
        MainWindow window;
        QCOMPARE(labelOf(window), notConnected);
        QTRY_COMPARE(labelOf(window), connected);
        QVERIFY(sinceConstruction.elapsed() >= 950); // a coarse timer may be 5 % early
        unit.unplug();
        QTRY_COMPARE(labelOf(window), notConnected);
    }

    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isUnit");
        QTest::newRow("plain") << QStringLiteral("Zorvi_Control") << true;
#ifdef Q_OS_LINUX
        QTest::newRow("the kernel's") << QStringLiteral("Zorvi_Control MIDI 1") << true;
#endif
        QTest::newRow("lower case") << QStringLiteral("zorvi_control") << false;
        QTest::newRow("suffix in lower case") << QStringLiteral("Zorvi_Control midi 1") << false;
        QTest::newRow("second port") << QStringLiteral("Zorvi_Control MIDI 2") << false;
        QTest::newRow("longer") << QStringLiteral("Zorvi_Control2") << false;
        QTest::newRow("blank behind") << QStringLiteral("Zorvi_Control ") << false;
        QTest::newRow("inside") << QStringLiteral("My Zorvi_Control") << false;
    }

    void names()
    {
        QFETCH(QString, name);
        QFETCH(bool, isUnit);
        MainWindow window;
        SimulatedUnit unit(juce::String(name.toStdString()));
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), isUnit ? connected : notConnected);
        if (isUnit)
            QVERIFY(hears(window, unit));
    }

    void comesAndGoes()
    {
        MainWindow window;
        SimulatedUnit unit;
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), notConnected);
        // Without a pause in between: an input is open again right after one was closed.
        for (int i = 0; i < 5; ++i) {
            QVERIFY(unit.plug());
            window.slot_PollDevices();
            QCOMPARE(labelOf(window), connected);
            QVERIFY(hears(window, unit));
            window.slot_PollDevices(); // still there: nothing changes
            QVERIFY(hears(window, unit));
            unit.unplug();
            QCOMPARE(labelOf(window), connected); // until the next poll
            window.slot_PollDevices();
            QCOMPARE(labelOf(window), notConnected);
        }
    }

    /// A window made after one that went while connected finds the unit for itself.
    void nextWindowLinksAnew()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        for (int i = 0; i < 2; ++i) {
            MainWindow window;
            window.slot_PollDevices();
            QCOMPARE(labelOf(window), connected);
            QVERIFY(hears(window, unit));
        }
    }

    /// A port that goes and comes back between two polls was never seen to go: nothing changes.
    void backWithinOneTick()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        unit.unplug();
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), connected);
        unit.unplug();
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), notConnected);
    }

    void sequencerAbsent()
    {
        memorysequencer::setAbsent(true);
        MainWindow window;
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), notConnected);
        memorysequencer::setAbsent(false);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QVERIFY(hears(window, unit));
    }

    /// The state is connected all the same, nothing is heard, and unplugging is survived.
    void openFails()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        memorysequencer::failOpens(true);
        window.slot_PollDevices();
        memorysequencer::failOpens(false);
        QCOMPARE(labelOf(window), connected);
        const Listener listener(window);
        unit.send(faderThree);
        QVERIFY(staysSilent(listener));
        window.slot_PollDevices(); // no retry while the port stays
        QVERIFY(staysSilent(listener));
        unit.unplug();
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), notConnected);
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QVERIFY(hears(window, unit));
    }

    /// Of two units the first one listed is heard; while either is there, the label says so.
    void secondUnitOfTheSameName()
    {
        MainWindow window;
        SimulatedUnit first;
        SimulatedUnit second;
        QVERIFY(first.plug());
        QVERIFY(second.plug());
        window.slot_PollDevices();
        QVERIFY(hears(window, first));
        const Listener listener(window);
        second.send(faderThree);
        QVERIFY(staysSilent(listener));
        first.unplug();
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), connected);
    }

    void outputAbsent()
    {
        MainWindow window;
        SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QCOMPARE(labelOf(window), connected);
        QVERIFY(hears(window, unit));
    }

    void identityRequest()
    {
        QCOMPARE(bytesOf(identity::request()), QByteArray::fromHex("F07E7F0601F7"));
    }

    void identityReplies_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("recognised");
        QTest::newRow("the reply") << identityReply << true;
        QTest::newRow("10 bytes") << QByteArray(identityReply).remove(11, 1) << false;
        QTest::newRow("12 bytes") << QByteArray(identityReply).insert(12, '\0') << false;
        QTest::newRow("no body") << QByteArray::fromHex("F0F7") << false;
        for (int i = 1; i <= 11; ++i) {
            QByteArray wrong = identityReply;
            wrong[i] = static_cast<char>(wrong.at(i) ^ 1);
            QTest::addRow("byte %d wrong", i - 1) << wrong << false;
        }
    }

    /// Through the wire: the reply is one debug line and nothing else, all other system exclusive
    /// messages are nothing at all.
    void identityReplies()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, recognised);
        MainWindow window;
        const Listener listener(window);
        if (recognised)
            QTest::ignoreMessage(QtDebugMsg, "sysex inquiry reply");
        window.handleIncomingMidiMessage(nullptr, rawMessage(bytes));
        QVERIFY(listener.messages.isEmpty());
        QCOMPARE(identity::isReply(rawMessage(bytes)), recognised);
    }

    /// What the unit may send, byte by byte, through JUCE's own thread: only notes and controllers
    /// pass, on every channel, in order.
    void filter()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        const Listener listener(window);

        QVector<QByteArray> expected;
        unit.send(rawMessage(identityReply));
        for (int status = 0x80; status < 0xF0; ++status) {
            const int kind = status & 0xF0;
            const bool oneDataByte = kind == 0xC0 || kind == 0xD0;
            const auto message =
                oneDataByte ? MidiMessage(status, 5) : MidiMessage(status, 5, status & 1);
            unit.send(message);
            if (kind == 0x80 || kind == 0x90 || kind == 0xB0)
                expected << bytesOf(message);
        }
        for (const int realTime : {0xF8, 0xFA, 0xFB, 0xFC, 0xFE, 0xFF})
            unit.send(MidiMessage(realTime));
        unit.send(faderThree);
        expected << bytesOf(faderThree);

        QTRY_COMPARE(listener.messages.size(), expected.size());
        QCOMPARE(listener.messages, expected);
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
