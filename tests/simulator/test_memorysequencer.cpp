// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"

#include <juce_audio_devices/juce_audio_devices.h>

#include <QTest>

#include <mutex>
#include <vector>

namespace
{
/// Keeps what arrives on JUCE's MIDI thread until the test looks at it.
class Recorder : public juce::MidiInputCallback
{
public:
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage& message) override
    {
        const std::lock_guard lock(mutex);
        messages.push_back(message);
    }

    std::size_t count()
    {
        const std::lock_guard lock(mutex);
        return messages.size();
    }

    std::vector<juce::MidiMessage> received()
    {
        const std::lock_guard lock(mutex);
        return messages;
    }

private:
    std::mutex mutex;
    std::vector<juce::MidiMessage> messages;
};

juce::StringArray namesOf(const juce::Array<juce::MidiDeviceInfo>& devices)
{
    juce::StringArray names;
    for (const auto& device : devices)
        names.add(device.name);
    return names;
}

std::unique_ptr<juce::MidiInput> openStarted(const juce::String& identifier, Recorder& recorder)
{
    auto input = juce::MidiInput::openDevice(identifier, &recorder);
    if (input != nullptr)
        input->start();
    return input;
}
} // namespace

/// JUCE's real MIDI code over the sequencer in memory.
class TestMemorySequencer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void portIsListedWhileItLives();
    void messagesArriveInOrder();
    void sysexArrivesWhole_data();
    void sysexArrivesWhole();
    void everyListenerGetsEverything();
    void portsWithOneNameAreTwoPorts();
    void deletedListenerLeavesNothingBehind();
    void manyPlugCyclesLeaveNothing();
    void sequencerCanBeAbsent();
    void opensCanFail();
};

void TestMemorySequencer::cleanup()
{
    QCOMPARE(memorysequencer::portCount(), 0);
}

void TestMemorySequencer::portIsListedWhileItLives()
{
    auto output = juce::MidiOutput::createNewDevice("Zorvi_Control");
    QVERIFY(output != nullptr);
    QCOMPARE(namesOf(juce::MidiInput::getAvailableDevices()), juce::StringArray("Zorvi_Control"));
    QVERIFY(juce::MidiOutput::getAvailableDevices().isEmpty());

    output.reset();
    QVERIFY(juce::MidiInput::getAvailableDevices().isEmpty());
}

void TestMemorySequencer::messagesArriveInOrder()
{
    constexpr int count = 10000;
    Recorder recorder;
    const auto output = juce::MidiOutput::createNewDevice("source");
    const auto input = openStarted(output->getIdentifier(), recorder);
    QVERIFY(input != nullptr);

    for (int i = 0; i < count; ++i)
        output->sendMessageNow(juce::MidiMessage::controllerEvent(1, i / 128, i % 128));

    QTRY_COMPARE(recorder.count(), std::size_t{count});
    const auto messages = recorder.received();
    for (int i = 0; i < count; ++i) {
        const auto& message = messages[static_cast<std::size_t>(i)];
        QCOMPARE(message.getControllerNumber() * 128 + message.getControllerValue(), i);
    }
}

void TestMemorySequencer::sysexArrivesWhole_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 64, 254, 255, 256, 4096, 20000, 60000})
        QTest::addRow("%d bytes between F0 and F7", size) << size;
}

void TestMemorySequencer::sysexArrivesWhole()
{
    QFETCH(int, size);
    std::vector<juce::uint8> body(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < body.size(); ++i)
        body[i] = static_cast<juce::uint8>(i % 127);
    const auto sysex = juce::MidiMessage::createSysExMessage(body.data(), size);
    const auto after = juce::MidiMessage::noteOn(1, 60, juce::uint8{1});

    Recorder recorder;
    const auto output = juce::MidiOutput::createNewDevice("source");
    const auto input = openStarted(output->getIdentifier(), recorder);
    output->sendMessageNow(sysex);
    output->sendMessageNow(after);

    QTRY_COMPARE(recorder.count(), std::size_t{2});
    const auto received = recorder.received().front();
    QCOMPARE(received.getSysExDataSize(), size);
    QVERIFY(std::equal(body.begin(), body.end(), received.getSysExData()));
    QVERIFY(recorder.received().back().isNoteOn());
}

void TestMemorySequencer::everyListenerGetsEverything()
{
    Recorder first;
    Recorder second;
    const auto output = juce::MidiOutput::createNewDevice("source");
    const auto firstInput = openStarted(output->getIdentifier(), first);
    const auto secondInput = openStarted(output->getIdentifier(), second);

    for (int i = 0; i < 100; ++i)
        output->sendMessageNow(juce::MidiMessage::controllerEvent(1, 1, i));

    QTRY_COMPARE(first.count(), std::size_t{100});
    QTRY_COMPARE(second.count(), std::size_t{100});
}

void TestMemorySequencer::portsWithOneNameAreTwoPorts()
{
    Recorder recorder;
    const auto heard = juce::MidiOutput::createNewDevice("Zorvi_Control");
    const auto other = juce::MidiOutput::createNewDevice("Zorvi_Control");
    QVERIFY(heard->getIdentifier() != other->getIdentifier());
    QCOMPARE(juce::MidiInput::getAvailableDevices().size(), 2);

    const auto input = openStarted(heard->getIdentifier(), recorder);
    other->sendMessageNow(juce::MidiMessage::controllerEvent(1, 1, 1));
    heard->sendMessageNow(juce::MidiMessage::controllerEvent(1, 2, 2));

    QTRY_COMPARE(recorder.count(), std::size_t{1});
    QCOMPARE(recorder.received().front().getControllerNumber(), 2);
}

void TestMemorySequencer::deletedListenerLeavesNothingBehind()
{
    Recorder recorder;
    const auto output = juce::MidiOutput::createNewDevice("source");
    auto input = juce::MidiInput::openDevice(output->getIdentifier(), &recorder);
    for (int i = 0; i < 100; ++i)
        output->sendMessageNow(juce::MidiMessage::controllerEvent(1, 1, i));
    QCOMPARE(memorysequencer::waitingEvents(), std::size_t{100}); // opened, never started

    input.reset();
    QCOMPARE(memorysequencer::waitingEvents(), std::size_t{0});
}

void TestMemorySequencer::manyPlugCyclesLeaveNothing()
{
    Recorder recorder;
    for (int i = 0; i < 1000; ++i) {
        const auto output = juce::MidiOutput::createNewDevice("Zorvi_Control");
        const auto input = juce::MidiInput::openDevice(output->getIdentifier(), &recorder);
        QVERIFY(input != nullptr);
        output->sendMessageNow(juce::MidiMessage::controllerEvent(1, 1, 1));
    }
    QCOMPARE(memorysequencer::clientCount(), 0);
    QCOMPARE(memorysequencer::waitingEvents(), std::size_t{0});
}

void TestMemorySequencer::sequencerCanBeAbsent()
{
    memorysequencer::setAbsent(true);
    QVERIFY(juce::MidiInput::getAvailableDevices().isEmpty());
    memorysequencer::setAbsent(false);
    QVERIFY(juce::MidiOutput::createNewDevice("Zorvi_Control") != nullptr);
}

/// The last test: JUCE keeps its client open after a failed attempt.
void TestMemorySequencer::opensCanFail()
{
    Recorder recorder;
    const auto output = juce::MidiOutput::createNewDevice("Zorvi_Control");
    memorysequencer::failOpens(true);
    QVERIFY(juce::MidiInput::openDevice(output->getIdentifier(), &recorder) == nullptr);
    QVERIFY(juce::MidiOutput::createNewDevice("second") == nullptr);
    QCOMPARE(juce::MidiInput::getAvailableDevices().size(), 1);

    memorysequencer::failOpens(false);
    QVERIFY(juce::MidiInput::openDevice(output->getIdentifier(), &recorder) != nullptr);
}

QTEST_GUILESS_MAIN(TestMemorySequencer)
#include "test_memorysequencer.moc"
