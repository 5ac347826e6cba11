// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparserdriver.h"

#include "sensor/quillon_midisensorparser.h"

Quillon_MIDISensorParserDriver::Quillon_MIDISensorParserDriver(Quillon_MIDISensorParser* midiParser)
    : QObject(midiParser)
    , parser(midiParser)
{
}

Quillon_MIDISensorParserDriver::~Quillon_MIDISensorParserDriver() = default;

void Quillon_MIDISensorParserDriver::processBlock(juce::AudioBuffer<float>& audio,
                                                  juce::MidiBuffer& midi)
{
    audio.clear();
    for (const auto event : midi)
        parser->parseMIDIMessage(event.getMessage());
    midi.clear();
}
