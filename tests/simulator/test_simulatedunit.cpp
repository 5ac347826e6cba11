// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"
#include "simulator/simulatedunit.h"
#include "simulator/unitplayer.h"

#include <QSignalSpy>
#include <QTest>

#include <atomic>

namespace
{
class Counter : public juce::MidiInputCallback
{
public:
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage& message) override
    {
        ++count;
        lastValue = message.getControllerValue();
    }

    std::atomic<int> count{0};
    std::atomic<int> lastValue{-1};
};

UnitScript controllers(int count)
{
    UnitScript script;
    for (int i = 0; i < count; ++i)
        script.push_back(
            {UnitStep::Action::Send, juce::MidiMessage::controllerEvent(1, 1, i % 128)});
    return script;
}
} // namespace

class TestSimulatedUnit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void portsComeAndGo_data();
    void portsComeAndGo();
    void sendingWhileUnpluggedIsHarmless();
    void playerSendsTheWholeScript();
    void playerKeepsThePace();
    void playerPullsTheCable();
    void aNewScriptReplacesTheOldOne();
    void withoutASequencerItStaysUnplugged();
};

void TestSimulatedUnit::portsComeAndGo_data()
{
    QTest::addColumn<bool>("withOutput");
    QTest::addColumn<int>("outputs");
    QTest::newRow("both ports") << true << 1;
    QTest::newRow("output absent") << false << 0;
}

void TestSimulatedUnit::portsComeAndGo()
{
    QFETCH(bool, withOutput);
    QFETCH(int, outputs);
    SimulatedUnit unit("Zorvi_Control",
                       withOutput ? SimulatedUnit::Ports::Both : SimulatedUnit::Ports::OnlySending);
    QVERIFY(!unit.isPlugged());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(unit.plug());
        QVERIFY(unit.plug());
        const auto inputs = juce::MidiInput::getAvailableDevices();
        QCOMPARE(inputs.size(), 1);
        QCOMPARE(inputs[0].name, juce::String("Zorvi_Control"));
        QCOMPARE(juce::MidiOutput::getAvailableDevices().size(), outputs);
        unit.unplug();
        QVERIFY(!unit.isPlugged());
        QCOMPARE(memorysequencer::portCount(), 0);
    }
}

void TestSimulatedUnit::sendingWhileUnpluggedIsHarmless()
{
    SimulatedUnit unit;
    unit.send(juce::MidiMessage::controllerEvent(1, 1, 1));
    QCOMPARE(memorysequencer::waitingEvents(), std::size_t{0});
}

void TestSimulatedUnit::playerSendsTheWholeScript()
{
    SimulatedUnit unit;
    QVERIFY(unit.plug());
    Counter counter;
    const auto input =
        juce::MidiInput::openDevice(juce::MidiInput::getAvailableDevices()[0].identifier, &counter);
    input->start();

    UnitPlayer player(unit);
    QSignalSpy finished(&player, SIGNAL(signal_Finished()));
    player.setPace(50000);
    player.play(controllers(5000));
    QVERIFY(player.isPlaying());
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!player.isPlaying());
    QTRY_COMPARE(counter.count.load(), 5000);
    QCOMPARE(counter.lastValue.load(), 4999 % 128);

    player.play({});
    QTRY_COMPARE(finished.count(), 2);
}

void TestSimulatedUnit::playerKeepsThePace()
{
    SimulatedUnit unit;
    UnitPlayer player(unit);
    QSignalSpy finished(&player, SIGNAL(signal_Finished()));
    player.setPace(200);
    QElapsedTimer timer;
    timer.start();
    player.play(controllers(100));
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY2(timer.elapsed() >= 450, "half a second of messages came too fast");
}

void TestSimulatedUnit::playerPullsTheCable()
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
    QCOMPARE(finished.count(), 0);
    QTRY_COMPARE(finished.count(), 1);
}

void TestSimulatedUnit::aNewScriptReplacesTheOldOne()
{
    SimulatedUnit unit;
    UnitPlayer player(unit);
    QSignalSpy finished(&player, SIGNAL(signal_Finished()));
    player.setPace(1);
    player.play(controllers(1000));
    player.setPace(1000);
    player.play(controllers(1));
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!player.isPlaying());
}

void TestSimulatedUnit::withoutASequencerItStaysUnplugged()
{
    SimulatedUnit unit;
    memorysequencer::setAbsent(true);
    QVERIFY(!SimulatedUnit::isSequencerPresent());
    QVERIFY(!unit.plug());
    QVERIFY(!unit.isPlugged());

    memorysequencer::setAbsent(false);
    QVERIFY(unit.plug());
}

QTEST_GUILESS_MAIN(TestSimulatedUnit)
#include "test_simulatedunit.moc"
