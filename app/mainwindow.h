// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "audio/audioengine.h"
#include "panels/componentroster.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"

#include <juce_audio_utils/juce_audio_utils.h>

#include <QMainWindow>
#include <QStringList>
#include <QTimer>

#include <array>
#include <memory>

class ComponentPanel;
class QThread;
class Quillon_Zorvi_0908_AssemblyTester_Parser;
class Quillon_Zorvi_0908_AssemblyTester_Processor;
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
/// and takes each unit through its run. Armed on the first component from the start.
///
/// Everything here runs on the GUI thread but for handleIncomingMidiMessage.
class MainWindow : public QMainWindow, public MidiInputCallback
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Called on JUCE's MIDI input thread: passes notes and controllers on to the panels and drops
    /// everything else. It only emits.
    void handleIncomingMidiMessage(juce::MidiInput* source,
                                   const juce::MidiMessage& message) override;

Q_SIGNALS:
    /// Arms one component's panel.
    void signal_QueueComponent(int componentNum);
    /// Resets every panel.
    void signal_Init();
    /// A note or controller message of the unit, in the order the unit sent them.
    void signal_DistributeMIDI(MidiMessage midiMessage);
    /// Skips one component.
    void signal_SkipComponent(int componentNum);
    /// Connected to the sound and never emitted, as the next one: the panels beep and click.
    void signal_Beep();
    void signal_Click();
    /// A component passed: the bell.
    void signal_Ding();

public Q_SLOTS:
    /// "Start Test": every panel untested, the run at its first component.
    void slot_Init();
    /// A panel's verdict; a result that is neither passed nor skipped does not move the run.
    void slot_ProcessComponentResult(int componentNum, int result);
    /// Looks whether the unit's port came or went.
    void slot_PollDevices();
    /// "Save Log", and the end of a run: writes the log of the serial number in the field.
    void slot_OutputLog();
    /// The same as slot_Init, for whoever starts the next run from outside.
    void slot_RestartTest();
    /// The notice at the end of a run; closing it begins the next one.
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
    void addPanel(ComponentPanel* panel, bool shown);
    const ComponentPanel* panelOf(int component) const;

    void connectUnit();
    void disconnectUnit();
    void closeUnitInput();
    void finishRun();

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
    juce::AudioDeviceManager deviceManager;
    juce::AudioSourcePlayer audioSourcePlayer;
    std::unique_ptr<AudioEngine> audioEngine;
    QStringList logLines;
    int currentComponent = -1;
    int tarvekStation = -1;
    std::unique_ptr<Ui::MainWindow> form;
};
