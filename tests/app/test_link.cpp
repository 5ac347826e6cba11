// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/identity.h"
#include "simulator/memorysequencer.h"
#include "tests/station.h"

#include <QElapsedTimer>

namespace
{
const QString connected = QStringLiteral("Device: CONNECTED");
const QString notConnected = QStringLiteral("Device: NOT CONNECTED");
const QByteArray identityReply = QByteArray::fromHex("F07E000602007E5523000000F7");
const MidiMessage faderThree{0xB0, 4, 64};

QByteArray bytesOf(const MidiMessage& message)
{
    return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
}

/// Keeps what the panels hear, on their thread: the bytes of every message that passed the filter.
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

QString labelAfterPoll(MainWindow& window)
{
    window.slot_PollDevices();
    return station::deviceLabel(window);
}

/// Whether what the unit sends now stays unheard for the time in which it would be heard.
bool isDeafTo(MainWindow& window, SimulatedUnit& unit)
{
    const Listener listener(window);
    unit.send(faderThree);
    QTest::qWait(200);
    return listener.messages.isEmpty();
}
} // namespace

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The timer polls by itself, the first time a second after construction.
    void pollsEverySecond()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QElapsedTimer sinceConstruction;
        sinceConstruction.start();
        MainWindow window;
        QCOMPARE(station::deviceLabel(window), notConnected);
        QTRY_COMPARE(station::deviceLabel(window), connected);
        QVERIFY(sinceConstruction.elapsed() >= 950); // a coarse timer may be 5 % early
        unit.unplug();
        QTRY_COMPARE(station::deviceLabel(window), notConnected);
    }

    void names_data()
    {
        QTest::addColumn<bool>("isUnit");
        QTest::newRow("Zorvi_Control") << true;
#ifdef Q_OS_LINUX
        QTest::newRow("Zorvi_Control MIDI 1") << true; // the kernel's
#endif
        QTest::newRow("zorvi_control") << false;
        QTest::newRow("Zorvi_Control midi 1") << false;
        QTest::newRow("Zorvi_Control MIDI 2") << false;
        QTest::newRow("Zorvi_Control2") << false;
        QTest::newRow("Zorvi_Control ") << false;
        QTest::newRow("My Zorvi_Control") << false;
    }

    /// Also without an output port, and also at a station whose forerunner went while connected.
    void names()
    {
        QFETCH(bool, isUnit);
        for (const auto ports : {SimulatedUnit::Ports::Both, SimulatedUnit::Ports::OnlySending}) {
            MainWindow window;
            SimulatedUnit unit(QTest::currentDataTag(), ports);
            QVERIFY(unit.plug());
            QCOMPARE(labelAfterPoll(window), isUnit ? connected : notConnected);
            QVERIFY(!isUnit || station::hears(window, unit));
        }
    }

    void comesAndGoes()
    {
        MainWindow window;
        SimulatedUnit unit;
        QCOMPARE(labelAfterPoll(window), notConnected);
        // Without a pause in between: an input is open again right after one was closed.
        for (int i = 0; i < 5; ++i) {
            QVERIFY(unit.plug());
            for (int poll = 0; poll < 2; ++poll) { // still there: nothing changes
                QCOMPARE(labelAfterPoll(window), connected);
                QVERIFY(station::hears(window, unit));
            }
            unit.unplug();
            QVERIFY(unit.plug()); // back before anybody looks: never seen to go
            QCOMPARE(labelAfterPoll(window), connected);
            unit.unplug();
            QCOMPARE(station::deviceLabel(window), connected); // until the next poll
            QCOMPARE(labelAfterPoll(window), notConnected);
        }
    }

    void sequencerAbsent()
    {
        memorysequencer::setAbsent(true);
        MainWindow window;
        const QString label = labelAfterPoll(window);
        memorysequencer::setAbsent(false);
        QCOMPARE(label, notConnected);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::hears(window, unit));
    }

    /// The state is connected all the same, nothing is heard, and unplugging is survived.
    void openFails()
    {
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        memorysequencer::failOpens(true);
        const QString label = labelAfterPoll(window);
        memorysequencer::failOpens(false);
        QCOMPARE(label, connected);
        QCOMPARE(labelAfterPoll(window), connected); // no retry while the port stays
        QVERIFY(isDeafTo(window, unit));
        unit.unplug();
        QCOMPARE(labelAfterPoll(window), notConnected);
        QVERIFY(unit.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::hears(window, unit));
    }

    /// Of two units the first one listed is heard; while either is there, the label says so.
    void secondUnitOfTheSameName()
    {
        MainWindow window;
        SimulatedUnit first;
        SimulatedUnit second;
        QVERIFY(first.plug() && second.plug());
        QCOMPARE(labelAfterPoll(window), connected);
        QVERIFY(station::hears(window, first));
        QVERIFY(isDeafTo(window, second));
        first.unplug();
        QCOMPARE(labelAfterPoll(window), connected);
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
        const MidiMessage message(bytes.constData(), bytes.size());
        if (recognised)
            QTest::ignoreMessage(QtDebugMsg, "sysex inquiry reply");
        window.handleIncomingMidiMessage(nullptr, message);
        QVERIFY(listener.messages.isEmpty());
        QCOMPARE(identity::isReply(message), recognised);
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
        unit.send(MidiMessage(identityReply.constData(), identityReply.size()));
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
