// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "audio/soundfiles.h"
#include "benchmarks/row.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <QCoreApplication>

namespace
{
constexpr int voiceCount = 39;
constexpr int blockSize = 512;
constexpr double sampleRate = 44100;
constexpr double maxSampleSeconds = 10;

/// A bell takes its voice for more than 100 blocks, heard or not.
void measureBlocks(benchmark::State& state, const std::function<void()>& playBells,
                   const std::function<void(juce::AudioBuffer<float>&)>& render)
{
    constexpr int blocks = 50;
    juce::AudioBuffer<float> buffer(2, blockSize);
    while (state.KeepRunning()) {
        state.PauseTiming();
        playBells();
        state.ResumeTiming();
        for (int i = 0; i < blocks; ++i) {
            buffer.setNotClear(); // as a device's block
            render(buffer);
        }
    }
    state.counters["per_iteration"] = blocks;
}

void measureEngine(benchmark::State& state)
{
    AudioEngine engine;
    engine.prepareToPlay(blockSize, sampleRate);
    const auto render = [&](auto& block) {
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(block));
    };
    const auto playBells = [&] {
        juce::AudioBuffer<float> buffer(2, blockSize);
        for (int i = 0; i < voiceCount; ++i) {
            engine.slot_Ding();
            render(buffer);
        }
    };
    measureBlocks(state, playBells, render);
}

/// The library's synthesiser with as many voices, each note at the pitch of its sound.
void measureSynthesiser(benchmark::State& state)
{
    juce::Synthesiser synth;
    synth.setCurrentPlaybackSampleRate(sampleRate);
    for (int note = 0; note < voiceCount; ++note) {
        const auto bell = openSound(QCoreApplication::applicationDirPath(), Sound::Bell);
        synth.addSound(new juce::SamplerSound("bell", *bell, juce::BigInteger(1) << note, note, 0,
                                              0, maxSampleSeconds));
        synth.addVoice(new juce::SamplerVoice);
    }
    const auto playBells = [&] {
        for (int note = 0; note < voiceCount; ++note)
            synth.noteOn(1, note, 1);
    };
    measureBlocks(state, playBells, [&](auto& block) {
        block.clear();
        synth.renderNextBlock(block, juce::MidiBuffer(), 0, blockSize);
    });
}
} // namespace

void addAudioRow()
{
    addRow("audio block, all 39 voices", "1.15", measureEngine, measureSynthesiser);
}
