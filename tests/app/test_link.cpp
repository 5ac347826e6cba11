// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitidentity.h"
#include "tests/support/poll.h"

#include <algorithm>

#include <unistd.h>

using memorysequencer::Address;
using memorysequencer::portTable;
using station::labelAfterPoll;

namespace
{
const QString connected = QStringLiteral("Device: CONNECTED");
const QString notConnected = QStringLiteral("Device: NOT CONNECTED");

/// Another program that reads every port, from a port that is not open to others, and connects
/// every port to every other, as session managers do.
class Patchbay
{
public:
    Patchbay()
        : client(*portTable().openClient(getppid()))
        , port(client.id, portTable().createPort(client, "Patchbay", SND_SEQ_PORT_CAP_WRITE))
    {
        portTable().subscribe(client, {SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE}, port);
    }
    ~Patchbay() { portTable().closeClient(client); }

    /// Connects what is there. Returns whether any port came or went since the last time.
    bool connectAll()
    {
        for (const Address& source : station::openPorts()) {
            portTable().subscribe(client, source, port);
            for (const Address& destination : station::openPorts())
                portTable().subscribe(client, source, destination);
        }
        bool changed = false;
        while (const snd_seq_event_t* event = portTable().receive(client))
            changed = changed || event->type != SND_SEQ_EVENT_CONTROLLER;
        return changed;
    }

private:
    memorysequencer::Client& client;
    const Address port;
};
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    /// Has to be the first: JUCE opens the sequencer again only while it has no port.
    void sequencerComesLater()
    {
        if (JUCE_MAJOR_VERSION >= 9)
            QSKIP("JUCE 9 looks for the sequencer once");
        portTable().setAbsent(true);
        MainWindow window;
        QCOMPARE(labelAfterPoll(window), notConnected);
        QCOMPARE(portTable().clientCount(), 0);
        portTable().setAbsent(false);
        SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::receives(window, unit));
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
            if (labelAfterPoll(window) == connected && station::receives(window, unit))
                connecting << name;
        }
        QCOMPARE(connecting, (QStringList{"Zorvi_Control", "Zorvi_Control MIDI 1"}));
    }

    /// The unit gets no message, an identity request neither.
    void sendsNothing()
    {
        auto& unit = *portTable().openClient(getpid());
        portTable().createPort(unit, "Zorvi_Control",
                               SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ |
                                   SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE);
        MainWindow window;
        QCOMPARE(labelAfterPoll(window), connected);
        QCOMPARE(portTable().waitingFor(unit), std::size_t{0});
        QCOMPARE(station::bytesOf(unitidentity::identityRequest()),
                 QByteArray::fromHex("F07E7F0601F7"));
        portTable().closeClient(unit);
    }

    /// A unit that is back before the next poll is received again after it, once, whoever else is
    /// connected to it or to the station; also if its port has another number now.
    void backBeforeThePoll()
    {
        MainWindow window;
        Patchbay patchbay;
        SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        SimulatedUnit other("Other", SimulatedUnit::Ports::OnlySending);
        for (int i = 0; i < 20; ++i) {
            unit.unplug();
            if (i == 10)
                QVERIFY(station::plug(other));
            patchbay.connectAll();
            QVERIFY(station::plug(unit));
            if (i % 2 == 0) // before the station, or after it
                patchbay.connectAll();
            QCOMPARE(labelAfterPoll(window), connected);
            patchbay.connectAll();
            const station::ReceivedMessages received(window);
            QVERIFY(station::receives(window, unit));
            QCOMPARE(received.messages.size(), 1);
        }
    }

    /// An input that is subscribed stays as it is: next to other programs, with a second unit that
    /// is listed first, and on a kernel that does not tell which program is which.
    void staysOpen()
    {
        MainWindow window;
        Patchbay patchbay;
        SimulatedUnit other("Other", SimulatedUnit::Ports::OnlySending);
        SimulatedUnit unit("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        SimulatedUnit second("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        QVERIFY(other.plug() && unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        other.unplug();
        patchbay.connectAll();
        QVERIFY(station::plug(second)); // in the place of the other
        patchbay.connectAll();
        for (const bool processesHidden : {false, true}) {
            portTable().hideProcesses(processesHidden);
            QCOMPARE(labelAfterPoll(window), connected);
            portTable().hideProcesses(false);
            QVERIFY(!patchbay.connectAll()); // the station made and removed no port
        }
        const station::ReceivedMessages received(window);
        second.send({0xB0, 4, 64});
        QVERIFY(station::receives(window, unit));
        QCOMPARE(received.messages, QVector<QByteArray>{"\xB0\x64\x40"});
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
        const station::ReceivedMessages received(window);

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
        QVERIFY(std::none_of(sent.begin() + 7, sent.end(), unitidentity::isIdentityReply));
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
        QTRY_COMPARE(received.messages.size(), expected.size());
        QCOMPARE(received.messages, expected);
    }

    /// Has to be the last: JUCE 7 keeps its client after a failed opening, and its thread needs a
    /// moment to stop between two windows. After a failed opening the state is connected all the
    /// same, nothing is received, and unplugging is survived. Of two units the first one listed is
    /// received, and when it goes, the other one.
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
        const station::ReceivedMessages received(window);
        unit.send({0xB0, 4, 64});
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), notConnected);

        SimulatedUnit second;
        QVERIFY(station::plug(unit) && second.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        second.send({0xB0, 4, 64});
        QVERIFY(station::receives(window, unit));
        QCOMPARE(received.messages, QVector<QByteArray>{"\xB0\x64\x40"}); // the first unit's
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::receives(window, second));
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
