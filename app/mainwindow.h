// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/outbox.h"
#include "audio/audioengine.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "unit/componentroster.h"

#include <juce_audio_devices/juce_audio_devices.h>

#include <QMainWindow>
#include <QStringList>
#include <QTimer>

#include <array>
#include <memory>

class ComponentPanel;
class QThread;
class Quillon_Zorvi_0908_AssemblyTester_Parser;
class Quillon_Zorvi_0908_AssemblyTester_Processor;
class UnitLink;
class Zorvi_0908_Button;
class Zorvi_0908_Fader;
class Zorvi_0908_Rotary;

namespace Ui
{
class MainWindow;
}

using juce::MidiInputCallback;
using juce::MidiMessage;

/// The station: owns the form, the panels, the sound, the sensor frame and the link to the unit,
/// and takes each unit through its run. The first component is armed from the start.
///
/// Everything runs on the GUI thread except handleIncomingMidiMessage.
class MainWindow : public QMainWindow, public MidiInputCallback
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Called on JUCE's MIDI input thread: emits notes and controllers to the panels and drops all
    /// other messages.
    void handleIncomingMidiMessage(juce::MidiInput* source,
                                   const juce::MidiMessage& message) override;

Q_SIGNALS:
    /// Arms one component's panel.
    void signal_QueueComponent(int componentNum);
    /// Resets every panel.
    void signal_Init();
    /// A note or controller message of the unit; the messages keep their order.
    void signal_DistributeMIDI(MidiMessage midiMessage);
    /// Skips one component.
    void signal_SkipComponent(int componentNum);
    /// Connected to the sound and not emitted: the panels beep and click.
    void signal_Beep();
    /// Connected and not emitted, as above.
    void signal_Click();
    /// A component passed: the bell.
    void signal_Ding();

public Q_SLOTS:
    /// "Start Test": resets every panel and arms the first component.
    void slot_Init();
    /// A panel's result; the run goes on if it is passed or skipped.
    void slot_ProcessComponentResult(int componentNum, int result);
    /// Connects or disconnects when the unit's port has appeared or gone. Opens the input again if
    /// the unit was gone in between.
    void slot_PollDevices();
    /// "Save Log", and the end of a run: writes the log under the serial number in the field.
    void slot_OutputLog();
    /// The same as slot_Init; not connected.
    void slot_RestartTest();
    /// Shows "Test Complete."; closing it starts the next run.
    void slot_TestComplete();
    /// "Skip Sensor >>".
    void slot_SkipCurrentSensorPressed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void connectForm();
    void createSound();
    void createParser();
    void createProcessor();
    void createPanels();
    /// Makes, places and connects the panel of a component, 0 to 43, of the class of its kind.
    template <typename Panel>
    Panel* addPanel(int componentNum);

    void connectUnit();
    void disconnectUnit();
    void openUnitInput();
    void reopenUnitInput();
    void closeUnitInput();
    void finishRun();
    /// By component number.
    std::array<const ComponentPanel*, roster::componentCount> panels() const;

    Quillon_Zorvi_0908_AssemblyTester_Monitor monitor{nullptr};
    QThread* parserThread = nullptr;
    Quillon_Zorvi_0908_AssemblyTester_Parser* parser = nullptr;
    QThread* processorThread = nullptr;
    Quillon_Zorvi_0908_AssemblyTester_Processor* processor = nullptr;
    std::array<Zorvi_0908_Button*, roster::buttonCount> buttonPanels{};
    std::array<Zorvi_0908_Rotary*, roster::rotaryCount> rotaryPanels{};
    std::array<Zorvi_0908_Fader*, roster::faderCount> faderPanels{};
    QTimer pollTimer;
    juce::MidiInput* midiInput = nullptr;
    /// Left undestroyed when the sound server has stopped.
    std::unique_ptr<juce::AudioDeviceManager> deviceManager =
        std::make_unique<juce::AudioDeviceManager>();
    juce::AudioSourcePlayer audioSourcePlayer;
    std::unique_ptr<AudioEngine> audioEngine;
    QStringList logLines;
    int currentComponent = -1;
    int tarvekStation = -1;
    std::unique_ptr<Ui::MainWindow> form;
    OutboxWriter outbox;
    std::unique_ptr<UnitLink> unitLink;
};
