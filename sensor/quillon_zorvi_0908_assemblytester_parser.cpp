// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"

#include "sensor/sensorvalues.h"

#include <QDebug>

Quillon_Zorvi_0908_AssemblyTester_Parser::Quillon_Zorvi_0908_AssemblyTester_Parser(
    Quillon_SensorValuesMonitor* valuesMonitor, QObject* parent)
    : Quillon_MIDISensorParser(parent)
    , monitor(valuesMonitor)
    , sensorValues(initialSensorValues())
{
    sensorValues.fill(static_cast<float>(initialValue));
}

Quillon_Zorvi_0908_AssemblyTester_Parser::~Quillon_Zorvi_0908_AssemblyTester_Parser() = default;

void Quillon_Zorvi_0908_AssemblyTester_Parser::parseMIDIMessage(
    const juce::MidiMessage& midiMessage)
{
    qDebug() << "midi?";
    Q_EMIT signal_DistributeMIDI(midiMessage);
}
