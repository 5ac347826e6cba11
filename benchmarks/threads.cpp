// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "benchmarks/row.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"

// What must be done in time: a tick of the processor, a block of the sound.

namespace
{
class Ticking : public Quillon_Zorvi_0908_AssemblyTester_Processor
{
public:
    using Quillon_Zorvi_0908_AssemblyTester_Processor::Quillon_Zorvi_0908_AssemblyTester_Processor;
    using Quillon_Zorvi_0908_AssemblyTester_Processor::timerEvent;
};

void tick(benchmark::State& state)
{
    Quillon_Zorvi_0908_AssemblyTester_Monitor monitor(nullptr);
    Ticking processor(&monitor, nullptr);
    while (state.KeepRunning())
        processor.timerEvent(nullptr);
}

constexpr int blockSize = 512;
constexpr double sampleRate = 44100;

/// Some blocks with so many voices taken; a bell takes one for more than 100 blocks, heard or not.
void playBlocks(benchmark::State& state, int voices)
{
    constexpr int blocks = 50;
    juce::AudioBuffer<float> buffer(2, blockSize);
    while (state.KeepRunning()) {
        state.PauseTiming();
        AudioEngine engine;
        engine.prepareToPlay(blockSize, sampleRate);
        for (int i = 0; i < voices; ++i) {
            engine.slot_Ding();
            engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        }
        state.ResumeTiming();
        for (int i = 0; i < blocks; ++i) {
            buffer.setNotClear(); // as a device's block
            engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        }
    }
    setPerIteration(state, blocks);
}
} // namespace

void addThreadRows()
{
    using std::placeholders::_1;
    constexpr double tickSeconds = 0.01;
    constexpr double blockSeconds = blockSize / sampleRate;
    addRow({"tick of the processor", 0, tickSeconds / 1000}, tick);
    addRow({"audio block, silent", 0, blockSeconds / 1000}, std::bind(playBlocks, _1, 0));
    addRow({"audio block, all 39 voices", 0, blockSeconds / 100}, std::bind(playBlocks, _1, 39));
}
