// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <QObject>

class Quillon_MIDISensorParser;

using juce::AudioProcessor;

/// The parser's processor: outputs silence and takes every MIDI message out of the block.
class Quillon_MIDISensorParserDriver : public QObject, public AudioProcessor
{
    Q_OBJECT

public:
    /// parser becomes the Qt parent and receives the messages.
    explicit Quillon_MIDISensorParserDriver(Quillon_MIDISensorParser* parser);
    ~Quillon_MIDISensorParserDriver() override;

    /// Clears the audio, gives each message to the parser, clears the messages. On the audio
    /// device's thread.
    void processBlock(juce::AudioBuffer<float>& audio, juce::MidiBuffer& midi) override;
    using AudioProcessor::processBlock;

    const juce::String getName() const override { return {}; }
    const juce::String getInputChannelName(int) const override { return {}; }
    const juce::String getOutputChannelName(int) const override { return {}; }
    const juce::String getProgramName(int) override { return {}; }
    void prepareToPlay(double, int) override {}
    void releaseResources() override {}
    void setCurrentProgram(int) override {}
    void changeProgramName(int, const juce::String&) override {}
    void getStateInformation(juce::MemoryBlock&) override {}
    void setStateInformation(const void*, int) override {}
    double getTailLengthSeconds() const override { return 0.0; }
    bool isInputChannelStereoPair(int) const override { return true; }
    bool isOutputChannelStereoPair(int) const override { return true; }
    bool silenceInProducesSilenceOut() const override { return true; }
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return true; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    /// True on purpose, although createEditor makes none: a host that asks only this question opens
    /// none.
    bool hasEditor() const override { return true; }
    int getNumPrograms() override { return 0; }
    int getCurrentProgram() override { return 0; }

private:
    Quillon_MIDISensorParser* parser;
};
