// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/simulatedunit.h"
#include "simulator/unitplayer.h"

#include <QSignalSpy>
#include <QTest>

#include <mutex>

namespace
{
/// Keeps the bytes that arrive on JUCE's MIDI thread from the first port in the list.
class Recorder : private juce::MidiInputCallback
{
public:
    Recorder() { input->start(); }

    QVector<QByteArray> received()
    {
        const std::lock_guard lock(mutex);
        return messages;
    }

    static QByteArray bytesOf(const juce::MidiMessage& message)
    {
        return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
    }

private:
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage& message) override
    {
        const std::lock_guard lock(mutex);
        messages << bytesOf(message);
    }

    std::mutex mutex;
    QVector<QByteArray> messages;
    std::unique_ptr<juce::MidiInput> input =
        juce::MidiInput::openDevice(juce::MidiInput::getAvailableDevices()[0].identifier, this);
};
} // namespace

/// The simulated unit over the sequencer in memory, listened to by JUCE's real MIDI code.
class TestSimulatedUnit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// From the first of two units with one name, in order; system exclusive messages of any length
    /// whole.
    void everythingArrives()
    {
        SimulatedUnit unit;
        SimulatedUnit other;
        QVERIFY(unit.plug() && other.plug());
        Recorder recorder;
        other.send({0x90, 1, 1});
        QVector<QByteArray> sent;
        const auto send = [&](const juce::MidiMessage& message) {
            unit.send(message);
            sent << Recorder::bytesOf(message);
        };
        for (int i = 0; i < 10000; ++i)
            send({0xB0, i / 128, i % 128});
        for (const int size : {1, 254, 255, 256, 60000})
            send(juce::MidiMessage::createSysExMessage(QByteArray(size, 'U').constData(), size));
        QTRY_COMPARE(recorder.received().size(), sent.size());
        QCOMPARE(recorder.received(), sent);
    }

    /// At its pace, with the cable's pauses; a script that is replaced is given up.
    void playsAScript()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        Recorder recorder;
        UnitPlayer player(unit);
        QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(1);
        player.play(UnitScript(100, {UnitStep::Action::Send, {0xB0, 1, 1}}));
        player.setPace(1000);
        player.setCablePause(200);
        UnitScript script(500, {UnitStep::Action::Send, {0xB0, 2, 2}});
        script.push_back({UnitStep::Action::Unplug, {}});
        script.push_back({UnitStep::Action::Replug, {}});
        QElapsedTimer time;
        time.start();
        player.play(script);
        QTRY_VERIFY(!unit.isPlugged());
        QVERIFY2(time.elapsed() >= 450, "half a second of messages came too fast");
        QTRY_COMPARE(recorder.received(), QVector<QByteArray>(500, "\xB0\x02\x02"));
        QCOMPARE(finished.count(), 0);
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(unit.isPlugged() && !player.isPlaying());
    }
};

QTEST_GUILESS_MAIN(TestSimulatedUnit)
#include "test_simulatedunit.moc"
