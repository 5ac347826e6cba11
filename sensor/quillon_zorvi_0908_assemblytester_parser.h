// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "sensor/quillon_midisensorparser.h"

#include <QVector>

class Quillon_SensorValuesMonitor;

using juce::MidiMessage;

/// The tester's parser: emits every message and decodes none; the panels do that.
class Quillon_Zorvi_0908_AssemblyTester_Parser : public Quillon_MIDISensorParser
{
    Q_OBJECT

public:
    /// monitor is stored and not used: this parser writes no raw values.
    Quillon_Zorvi_0908_AssemblyTester_Parser(Quillon_SensorValuesMonitor* monitor, QObject* parent);
    ~Quillon_Zorvi_0908_AssemblyTester_Parser() override;

    void parseMIDIMessage(const juce::MidiMessage& midiMessage) override;

Q_SIGNALS:
    /// Emitted on the audio device's thread.
    void signal_DistributeMIDI(MidiMessage midiMessage);

protected:
    Quillon_SensorValuesMonitor* monitor;
    // Not used: this parser does not decode.
    QVector<float> sensorValues;
    qint64 lastBlockTime = -1;
    qint32 lastController = -1;
    qint32 initialValue = 0;
};
