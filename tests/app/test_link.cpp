// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitlink.h"
#include "sequencer/porttable.h"
#include "tests/support/station.h"

#include <QTimer>

namespace
{
const QString connected = QStringLiteral("Device: CONNECTED");
const QString notConnected = QStringLiteral("Device: NOT CONNECTED");
const QByteArray identityReply = QByteArray::fromHex("F07E000602007E5523000000F7");

QString labelAfterPoll(MainWindow& window)
{
    window.slot_PollDevices();
    return station::deviceLabel(window);
}

/// The intervals of the timers that fired on the GUI thread.
struct FiredTimers : QObject {
    FiredTimers() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        const auto* timer = qobject_cast<QTimer*>(receiver);
        if (event->type() == QEvent::Timer && timer != nullptr)
            intervals << timer->interval();
        return false;
    }
    QVector<int> intervals;
};

/// The unit's listening side: counts what it is sent.
struct Unit : juce::MidiInputCallback {
    void handleIncomingMidiMessage(juce::MidiInput*, const MidiMessage& message) override
    {
        ++(message.isController() ? controllers : others);
    }
    std::atomic<int> controllers{0};
    std::atomic<int> others{0};
};
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A station that is gone leaves no port behind but the one that keeps JUCE's thread running.
    void initTestCase()
    {
        juce::MidiInput::getAvailableDevices(); // makes the ports that JUCE has for itself
        const int ports = memorysequencer::portTable().portCount();
        {
            SimulatedUnit unit;
            MainWindow window;
            QVERIFY(unit.plug());
            QCOMPARE(labelAfterPoll(window), connected);
        }
        QCOMPARE(memorysequencer::portTable().portCount(), ports + 1);
    }

    void pollsEverySecond()
    {
        const FiredTimers fired;
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QCOMPARE(station::deviceLabel(window), notConnected);
        QTRY_COMPARE(station::deviceLabel(window), connected);
        QCOMPARE(fired.intervals, QVector<int>{1000});
        unit.unplug();
        QTRY_COMPARE(station::deviceLabel(window), notConnected);
    }

    /// Also without an output port, and also after a window that went while connected.
    void names()
    {
        QStringList connecting;
        for (const char* name :
             {"Zorvi_Control", "Zorvi_Control MIDI 1", "zorvi_control", "Zorvi_Control midi 1",
              "Zorvi_Control MIDI 2", "Zorvi_Control2", "Zorvi_Control ", "My Zorvi_Control"})
            for (const auto ports :
                 {SimulatedUnit::Ports::Both, SimulatedUnit::Ports::OnlySending}) {
                MainWindow window;
                SimulatedUnit unit(name, ports);
                QVERIFY(unit.plug());
                if (labelAfterPoll(window) == connected && station::hears(window, unit))
                    connecting << name;
            }
        connecting.removeDuplicates();
        QCOMPARE(connecting, (QStringList{"Zorvi_Control", "Zorvi_Control MIDI 1"}));
    }

    /// A connected station has one port open, its input, and none after the cable or the window
    /// went. An input that was opened right after another one closed is not deaf.
    void openPorts()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        const int idle = memorysequencer::portTable().portCount();
        {
            MainWindow window;
            for (int i = 0; i < 3; ++i) {
                QVERIFY(unit.plug());
                for (int poll = 0; poll < 2; ++poll) { // still there: nothing changes
                    QCOMPARE(labelAfterPoll(window), connected);
                    QCOMPARE(memorysequencer::portTable().portCount(), idle + 1);
                    QVERIFY(station::hears(window, unit));
                }
                unit.unplug();
                QCOMPARE(station::deviceLabel(window), connected); // until the next poll
                QCOMPARE(labelAfterPoll(window), notConnected);
                QCOMPARE(memorysequencer::portTable().portCount(), idle - 2);
            }
            QVERIFY(unit.plug());
            QCOMPARE(labelAfterPoll(window), connected);
        }
        QCOMPARE(memorysequencer::portTable().portCount(), idle);
    }

    /// The unit gets no message, an identity request neither.
    void sendsNothing()
    {
        Unit unit;
        const auto sending = juce::MidiOutput::createNewDevice("Zorvi_Control");
        const auto listening = juce::MidiInput::createNewDevice("Zorvi_Control", &unit);
        listening->start();
        MainWindow window;
        QCOMPARE(labelAfterPoll(window), connected);
        for (const auto& device : juce::MidiOutput::getAvailableDevices())
            if (device.name == "Zorvi_Control")
                juce::MidiOutput::openDevice(device.identifier)->sendMessageNow({0xB0, 1, 1});
        QTRY_COMPARE(unit.controllers.load(), 1);
        QCOMPARE(unit.others.load(), 0);
        QCOMPARE(station::bytesOf(unitlink::identityRequest()),
                 QByteArray::fromHex("F07E7F0601F7"));
    }

    /// The state is connected all the same, nothing is heard, and unplugging is survived.
    void openFails()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        memorysequencer::portTable().failOpens(true);
        const QString label = labelAfterPoll(window);
        memorysequencer::portTable().failOpens(false);
        QCOMPARE(label, connected);
        QCOMPARE(labelAfterPoll(window), connected); // no retry while the port stays
        const station::Hearing hearing(window);
        unit.send({0xB0, 4, 64});
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), notConnected);
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::hears(window, unit));
        QCOMPARE(hearing.messages.size(), 1);
    }

    /// Of two units the first one listed is heard; while either is there, the label says so.
    void secondUnitOfTheSameName()
    {
        MainWindow window;
        SimulatedUnit first;
        SimulatedUnit second;
        QVERIFY(first.plug() && second.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        const station::Hearing hearing(window);
        second.send({0xB0, 4, 64});
        QVERIFY(station::hears(window, first));
        QCOMPARE(hearing.messages.size(), 1);
        first.unplug();
        QCOMPARE(labelAfterPoll(window), connected);
    }

    /// The reply is one debug line and nothing else; other system exclusive messages are nothing.
    void identityReplies()
    {
        QVector<QByteArray> others{QByteArray(identityReply).remove(11, 1),
                                   QByteArray(identityReply).insert(12, '\0'),
                                   QByteArray::fromHex("F0F7")};
        for (int i = 1; i <= 11; ++i) {
            others << identityReply;
            others.last()[i] = static_cast<char>(identityReply.at(i) ^ 1);
        }
        MainWindow window;
        const station::Hearing hearing(window);
        for (const QByteArray& bytes : others) {
            const MidiMessage message(bytes.constData(), bytes.size());
            QVERIFY(!unitlink::isIdentityReply(message));
            station::receive(window, {message});
        }
        QTest::ignoreMessage(QtDebugMsg, "sysex inquiry reply");
        station::receive(window, {MidiMessage(identityReply.constData(), identityReply.size())});
        QVERIFY(hearing.messages.isEmpty());
    }

    /// What the unit may send, byte by byte, through JUCE's own thread: only notes and controllers
    /// pass, on every channel, in order.
    void filter()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        const station::Hearing hearing(window);

        QVector<QByteArray> expected;
        unit.send(MidiMessage(identityReply.constData(), identityReply.size()));
        for (const int realTime : {0xF8, 0xFA, 0xFB, 0xFC, 0xFE, 0xFF})
            unit.send(MidiMessage(realTime));
        for (int status = 0xEF; status >= 0x80; --status) {
            const int kind = status & 0xF0;
            const bool oneDataByte = kind == 0xC0 || kind == 0xD0;
            const auto message =
                oneDataByte ? MidiMessage(status, 5) : MidiMessage(status, 5, status & 1);
            unit.send(message);
            if (kind == 0x80 || kind == 0x90 || kind == 0xB0)
                expected << station::bytesOf(message);
        }
        QTRY_COMPARE(hearing.messages.size(), expected.size());
        QCOMPARE(hearing.messages, expected);
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
