// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"
#include "simulator/simulatedunit.h"
#include "simulator/unitplayer.h"

#include <QSignalSpy>
#include <QTest>

#include <mutex>

namespace
{
/// Keeps what arrives on JUCE's MIDI thread until the test looks at it.
class Recorder : private juce::MidiInputCallback
{
public:
    /// Listens to the port of this number in the list.
    explicit Recorder(int port = 0)
        : input(juce::MidiInput::openDevice(juce::MidiInput::getAvailableDevices()[port].identifier,
                                            this))
    {
        input->start();
    }

    std::vector<juce::MidiMessage> received()
    {
        const std::lock_guard lock(mutex);
        return messages;
    }

private:
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage& message) override
    {
        const std::lock_guard lock(mutex);
        messages.push_back(message);
    }

    std::mutex mutex;
    std::vector<juce::MidiMessage> messages;
    std::unique_ptr<juce::MidiInput> input;
};

juce::MidiMessage numbered(int number)
{
    return juce::MidiMessage::controllerEvent(1, number / 128 % 128, number % 128);
}

UnitScript numberedSteps(int count)
{
    UnitScript script;
    for (int i = 0; i < count; ++i)
        script.push_back({UnitStep::Action::Send, numbered(i)});
    return script;
}
} // namespace

/// The simulated unit over the sequencer in memory, listened to by JUCE's real MIDI code.
class TestSimulatedUnit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        QCOMPARE(memorysequencer::clientCount(), 0);
        QCOMPARE(memorysequencer::waitingEvents(), std::size_t{0});
    }

    void portsComeAndGo()
    {
        SimulatedUnit whole;
        SimulatedUnit withoutOutput("Zorvi_Control", SimulatedUnit::Ports::OnlySending);
        for (int i = 0; i < 100; ++i) {
            for (SimulatedUnit* unit : {&whole, &withoutOutput}) {
                unit->send(numbered(1)); // unplugged: lost, harmless
                QVERIFY(unit->plug());
                QVERIFY(unit->plug());
                const auto inputs = juce::MidiInput::getAvailableDevices();
                QCOMPARE(inputs.size(), 1);
                QCOMPARE(inputs[0].name, juce::String("Zorvi_Control"));
                QCOMPARE(juce::MidiOutput::getAvailableDevices().size(), unit == &whole ? 1 : 0);
                unit->unplug();
                QVERIFY(!unit->isPlugged());
                QCOMPARE(memorysequencer::portCount(), 0);
            }
        }
    }

    void everyListenerGetsEverythingInOrder()
    {
        constexpr std::size_t count = 10000;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        Recorder first;
        Recorder second;
        for (std::size_t i = 0; i < count; ++i)
            unit.send(numbered(static_cast<int>(i)));

        for (Recorder* recorder : {&first, &second}) {
            QTRY_COMPARE(recorder->received().size(), count);
            const auto messages = recorder->received();
            for (std::size_t i = 0; i < count; ++i)
                QCOMPARE(messages[i].getControllerNumber() * 128 + messages[i].getControllerValue(),
                         static_cast<int>(i));
        }
    }

    void sysexArrivesWhole_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {1, 64, 254, 255, 256, 4096, 20000, 60000})
            QTest::addRow("%d bytes between F0 and F7", size) << size;
    }

    void sysexArrivesWhole()
    {
        QFETCH(int, size);
        QByteArray body;
        for (int i = 0; i < size; ++i)
            body.append(static_cast<char>(i % 127));
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        Recorder recorder;
        unit.send(juce::MidiMessage::createSysExMessage(body.constData(), size));
        unit.send(numbered(1));

        QTRY_COMPARE(recorder.received().size(), std::size_t{2});
        const auto sysex = recorder.received().front();
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(sysex.getSysExData()),
                            sysex.getSysExDataSize()),
                 body);
        QVERIFY(recorder.received().back().isController());
    }

    void unitsWithOneNameAreTwoUnits()
    {
        SimulatedUnit heard;
        SimulatedUnit other;
        QVERIFY(heard.plug() && other.plug());
        QCOMPARE(juce::MidiInput::getAvailableDevices().size(), 2);
        Recorder recorder;
        other.send(numbered(1));
        heard.send(numbered(2));
        QTRY_VERIFY(!recorder.received().empty());
        QCOMPARE(recorder.received().front().getControllerValue(), 2);
    }

    /// What waited for a listener that was never started goes with the listener.
    void deletedListenerLeavesNothingBehind()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        for (int i = 0; i < 100; ++i) {
            const auto port = juce::MidiInput::getAvailableDevices()[0];
            const auto input = juce::MidiInput::openDevice(port.identifier, nullptr);
            QCOMPARE(memorysequencer::waitingEvents(), std::size_t{0});
            unit.send(numbered(i));
            QCOMPARE(memorysequencer::waitingEvents(), std::size_t{1});
        }
    }

    void playerSendsTheWholeScript()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        Recorder recorder;
        UnitPlayer player(unit);
        QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(1);
        player.play(numberedSteps(1000)); // never gets far: replaced by the next script
        player.setPace(50000);
        player.play(numberedSteps(5000));
        QVERIFY(player.isPlaying());
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(!player.isPlaying());
        QTRY_COMPARE(recorder.received().size(), std::size_t{5000});

        player.play({});
        QTRY_COMPARE(finished.count(), 2);
    }

    void playerKeepsThePace()
    {
        SimulatedUnit unit;
        UnitPlayer player(unit);
        QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(200);
        QElapsedTimer timer;
        timer.start();
        player.play(numberedSteps(100));
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY2(timer.elapsed() >= 450, "half a second of messages came too fast");
    }

    void playerPullsTheCable()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        UnitPlayer player(unit);
        QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(1000);
        player.setCablePause(200);
        player.play({{UnitStep::Action::Unplug, {}}, {UnitStep::Action::Replug, {}}});
        QTRY_VERIFY(!unit.isPlugged());
        QCOMPARE(finished.count(), 0);
        QTRY_VERIFY(unit.isPlugged());
        QCOMPARE(finished.count(), 0);
        QTRY_COMPARE(finished.count(), 1);
    }

    void withoutASequencerItStaysUnplugged()
    {
        SimulatedUnit unit;
        memorysequencer::setAbsent(true);
        QVERIFY(!SimulatedUnit::isSequencerPresent());
        QVERIFY(!unit.plug());
        QVERIFY(!unit.isPlugged());
        memorysequencer::setAbsent(false);
        QVERIFY(unit.plug());
    }
};

QTEST_GUILESS_MAIN(TestSimulatedUnit)
#include "test_simulatedunit.moc"
