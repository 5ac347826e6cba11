// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/poll.h"

#include <algorithm>

using memorysequencer::portTable;
using station::labelAfterPoll;

namespace
{
const QString connected = QStringLiteral("Device: CONNECTED");
const QString notConnected = QStringLiteral("Device: NOT CONNECTED");

/// The unit's listening side.
struct Listener : juce::MidiInputCallback {
    void handleIncomingMidiMessage(juce::MidiInput*, const MidiMessage& message) override
    {
        if (firstStatus == 0)
            firstStatus = message.getRawData()[0];
    }
    std::atomic<int> firstStatus{0};
};
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    /// Has to be the first: JUCE opens the sequencer anew only while it has no port.
    void sequencerComesLater()
    {
        if (JUCE_MAJOR_VERSION >= 9)
            QSKIP("JUCE 9 looks for the sequencer once");
        int ports = 0;
        portTable().setAbsent(true);
        {
            MainWindow window;
            QCOMPARE(labelAfterPoll(window), notConnected);
            QCOMPARE(portTable().clientCount(), 0);
            portTable().setAbsent(false);
            SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
            QVERIFY(unit.plug());
            ports = portTable().portCount();
            QCOMPARE(labelAfterPoll(window), connected);
            QVERIFY(station::hears(window, unit));
        }
        // The unit's port is gone; the one that keeps JUCE's thread running is new.
        QCOMPARE(portTable().portCount(), ports - 1 + 1);
    }

    /// Also without an output port, and also after a window that went while connected.
    void names()
    {
        QStringList connecting;
        for (const char* name :
             {"Zorvi_Control", "Zorvi_Control MIDI 1", "zorvi_control", "Zorvi_Control midi 1",
              "Zorvi_Control MIDI 2", "Zorvi_Control2", "Zorvi_Control ", "My Zorvi_Control"}) {
            MainWindow window;
            SimulatedUnit unit(name, SimulatedUnit::Ports::OnlySending);
            QVERIFY(unit.plug());
            if (labelAfterPoll(window) == connected && station::hears(window, unit))
                connecting << name;
        }
        QCOMPARE(connecting, (QStringList{"Zorvi_Control", "Zorvi_Control MIDI 1"}));
    }

    /// The unit gets no message, an identity request neither.
    void sendsNothing()
    {
        Listener unit;
        const auto sending = juce::MidiOutput::createNewDevice("Zorvi_Control");
        const auto listening = juce::MidiInput::createNewDevice("Zorvi_Control", &unit);
        listening->start();
        MainWindow window;
        QCOMPARE(labelAfterPoll(window), connected);
        const auto port = unitlink::identifierIn(juce::MidiOutput::getAvailableDevices());
        juce::MidiOutput::openDevice(port)->sendMessageNow({0xB0, 1, 1});
        QTRY_VERIFY(unit.firstStatus != 0);
        QCOMPARE(unit.firstStatus.load(), 0xB0);
        QCOMPARE(station::bytesOf(unitlink::identityRequest()),
                 QByteArray::fromHex("F07E7F0601F7"));
    }

    /// After a failed opening the state is connected all the same, nothing is heard, and unplugging
    /// is survived. Of two units the first one listed is heard; while either is there, the label
    /// says so.
    void failedOpeningAndSecondUnit()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        portTable().failOpens(true);
        const QString label = labelAfterPoll(window);
        portTable().failOpens(false);
        QCOMPARE(label, connected);
        QCOMPARE(labelAfterPoll(window), connected); // no retry while the port stays
        const station::Hearing hearing(window);
        unit.send({0xB0, 4, 64});
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), notConnected);

        SimulatedUnit second;
        QVERIFY(station::plug(unit) && second.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        second.send({0xB0, 4, 64});
        QVERIFY(station::hears(window, unit));
        QCOMPARE(hearing.messages, QVector<QByteArray>{"\xB0\x64\x40"}); // the first unit's
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), connected);
    }

    /// A unit that is back before the next poll is heard again after it, once, also if its port has
    /// another number now; nothing else is opened. Of two units the heard one alone is heard on.
    void backBeforeThePoll()
    {
        MainWindow window;
        SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        SimulatedUnit other("Other", SimulatedUnit::Ports::OnlySending);
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        const int ports = portTable().portCount();
        for (int i = 0; i < 20; ++i) {
            unit.unplug();
            if (i == 10)
                QVERIFY(station::plug(other));
            QVERIFY(station::plug(unit));
            QCOMPARE(labelAfterPoll(window), connected);
            QCOMPARE(labelAfterPoll(window), connected);
            QCOMPARE(portTable().portCount(), ports + (i < 10 ? 0 : 1));
            const station::Hearing hearing(window);
            QVERIFY(station::hears(window, unit));
            QCOMPARE(hearing.messages.size(), 1);
        }
        other.unplug();
        SimulatedUnit second("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        QVERIFY(station::plug(second)); // listed before the first
        QCOMPARE(labelAfterPoll(window), connected);
        const station::Hearing hearing(window);
        second.send({0xB0, 4, 64});
        QVERIFY(station::hears(window, unit));
        QCOMPARE(hearing.messages, QVector<QByteArray>{"\xB0\x64\x40"});
    }

    /// What the unit may send, through JUCE's own thread: only notes and controllers pass, on every
    /// channel, in order. The identity reply is a debug line; one that differs in a byte is
    /// nothing.
    void filter()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        const station::Hearing hearing(window);

        const QByteArray reply = QByteArray::fromHex("F07E000602007E5523000000F7");
        QVector<QByteArray> exclusive{reply, QByteArray(reply).remove(11, 1),
                                      QByteArray(reply).insert(12, '\0'), "\xF0\xF7"};
        for (int i = 1; i <= 11; ++i) {
            exclusive << reply;
            exclusive.last()[i] = static_cast<char>(reply.at(i) ^ 1);
        }
        QVector<MidiMessage> sent{0xF8, 0xFA, 0xFB, 0xFC, 0xFE, 0xFF};
        for (const QByteArray& bytes : exclusive)
            sent << MidiMessage(bytes.constData(), bytes.size());
        QVERIFY(std::none_of(sent.begin() + 7, sent.end(), unitlink::isIdentityReply));
        QVector<QByteArray> expected;
        for (int status = 0xEF; status >= 0x80; --status) {
            const int kind = status & 0xF0;
            const bool oneDataByte = kind == 0xC0 || kind == 0xD0;
            sent << (oneDataByte ? MidiMessage(status, 5) : MidiMessage(status, 5, status & 1));
            if (kind == 0x80 || kind == 0x90 || kind == 0xB0)
                expected << station::bytesOf(sent.last());
        }

        QTest::ignoreMessage(QtDebugMsg, "sysex inquiry reply");
        for (const MidiMessage& message : sent)
            unit.send(message);
        QTRY_COMPARE(hearing.messages.size(), expected.size());
        QCOMPARE(hearing.messages, expected);
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
