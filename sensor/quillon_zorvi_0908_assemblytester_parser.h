// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "sensor/quillon_midisensorparser.h"

#include <QVector>

class Quillon_SensorValuesMonitor;

using juce::MidiMessage;

/// The tester's parser: passes every message on as a signal and decodes nothing; what a message
/// means is for the panels to say.
class Quillon_Zorvi_0908_AssemblyTester_Parser : public Quillon_MIDISensorParser
{
    Q_OBJECT

public:
    /// The monitor is kept for a parser that writes raw values; this one does not.
    Quillon_Zorvi_0908_AssemblyTester_Parser(Quillon_SensorValuesMonitor* monitor, QObject* parent);
    ~Quillon_Zorvi_0908_AssemblyTester_Parser() override;

    void parseMIDIMessage(const juce::MidiMessage& midiMessage) override;

Q_SIGNALS:
    /// Emitted on the thread that plays the block.
    void signal_DistributeMIDI(MidiMessage midiMessage);

protected:
    Quillon_SensorValuesMonitor* monitor;
    // For a parser that decodes; this one leaves them as they are.
    QVector<float> sensorValues;
    qint64 lastBlockTime = -1;
    qint32 lastController = -1;
    qint32 initialValue = 0;
};
