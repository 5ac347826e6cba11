// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/simulatedunit.h"
#include "simulator/unitplayer.h"

#include <QSignalSpy>
#include <QTest>

#include <mutex>

namespace
{
/// Keeps what arrives on JUCE's MIDI thread from the first port in the list.
class Recorder : private juce::MidiInputCallback
{
public:
    Recorder() { input->start(); }

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
    std::unique_ptr<juce::MidiInput> input =
        juce::MidiInput::openDevice(juce::MidiInput::getAvailableDevices()[0].identifier, this);
};

QByteArray bytesOf(const juce::MidiMessage& message)
{
    return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
}

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
    /// From the first of two units with one name everything arrives, in order, and system exclusive
    /// messages of any length whole.
    void everythingArrives()
    {
        SimulatedUnit unit;
        SimulatedUnit other;
        QVERIFY(unit.plug() && other.plug());
        QCOMPARE(juce::MidiInput::getAvailableDevices().size(), 2);
        Recorder recorder;
        other.send(juce::MidiMessage::noteOn(1, 1, 1.0F));
        std::vector<juce::MidiMessage> sent;
        for (int i = 0; i < 10000; ++i)
            sent.push_back(numbered(i));
        for (const int size : {1, 254, 255, 256, 60000}) {
            const QByteArray body(size, '\x55');
            sent.push_back(juce::MidiMessage::createSysExMessage(body.constData(), size));
        }
        for (const auto& message : sent)
            unit.send(message);
        QTRY_COMPARE(recorder.received().size(), sent.size());
        const auto messages = recorder.received();
        for (std::size_t i = 0; i < sent.size(); ++i)
            QCOMPARE(bytesOf(messages[i]), bytesOf(sent[i]));
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
        player.setPace(1000);
        QElapsedTimer time;
        time.start();
        player.play(numberedSteps(500));
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY2(time.elapsed() >= 450, "half a second of messages came too fast");
        QVERIFY(!player.isPlaying());
        QTRY_COMPARE(recorder.received().size(), std::size_t{500});
        player.play({});
        QTRY_COMPARE(finished.count(), 2);
    }

    void playerPullsTheCable()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        UnitPlayer player(unit);
        QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(1000);
        player.setCablePause(200);
        player.play({{UnitStep::Action::Unplug}, {UnitStep::Action::Replug}});
        QTRY_VERIFY(!unit.isPlugged());
        QCOMPARE(finished.count(), 0);
        QTRY_VERIFY(unit.isPlugged());
        QTRY_COMPARE(finished.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestSimulatedUnit)
#include "test_simulatedunit.moc"
