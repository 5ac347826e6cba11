// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "audio/soundfiles.h"
#include "benchmarks/row.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <QCoreApplication>

#include <memory>

// One block of the sound, in a program of its own because the engine looks for its sounds beside
// the program, and these are others than the station's.

namespace
{
constexpr int blockSize = 512;
/// A hundredth of the time that a block plays.
constexpr double limit = blockSize / 44100.0 / 100;

// Device and sounds both say a rate a thousand times the real one. What a block costs does not
// depend on the rate; but notes, their release included, then last a thousand times as many blocks,
// so that as many voices are busy in the last block of a round as in the first.
constexpr double sampleRate = 44100.0 * 1000;
constexpr int soundLength = 441000;
constexpr int blocksOfARound = 400;

/// Lays sounds of that rate beside this program.
bool makeSounds()
{
    juce::AudioBuffer<float> tone(1, soundLength);
    for (int i = 0; i < soundLength; ++i)
        tone.setSample(0, i, static_cast<float>(i % 100) / 10000.0F);
    const juce::File folder(QCoreApplication::applicationDirPath().toStdString());
    for (const char* name : {"Beep", "Click", "Bell"}) {
        const auto file = folder.getChildFile(juce::String("Zorvi_AssemblyTest_") + name + ".wav");
        file.deleteFile();
        const std::unique_ptr<juce::AudioFormatWriter> writer(
            juce::WavAudioFormat().createWriterFor(new juce::FileOutputStream(file), sampleRate, 1,
                                                   16, {}, 0));
        if (writer == nullptr || !writer->writeFromAudioSampleBuffer(tone, 0, soundLength))
            return false;
    }
    return true;
}

/// Plays blocks with what was asked for; the two sides of each row.
struct Player {
    std::function<void()> beep;         ///< Three voices, once.
    std::function<void()> clickAndBell; ///< Three voices more.
    std::function<void(juce::AudioBuffer<float>&)> playBlock;
};

Player enginePlayer()
{
    const auto engine = std::make_shared<AudioEngine>();
    engine->prepareToPlay(blockSize, sampleRate);
    return {[engine] { engine->slot_Beep(); },
            [engine] {
                engine->slot_Click();
                engine->slot_Ding();
            },
            [engine](juce::AudioBuffer<float>& buffer) {
                engine->getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
            }};
}

/// juce::Synthesiser alone, with as many voices and the same sounds: the block is cleared and
/// rendered. The layers that it stops itself while it starts a note are released, not silent: they
/// are as busy as the engine's.
Player synthesiserPlayer()
{
    constexpr int voices = 39;
    constexpr double fadeSeconds = 0.005;
    constexpr double longestSeconds = 10.0;
    const auto synth = std::make_shared<juce::Synthesiser>();
    for (int i = 0; i < voices; ++i)
        synth->addVoice(new juce::SamplerVoice);
    juce::BigInteger notes;
    int note = 0;
    for (const Sound sound : {Sound::Beep, Sound::Click, Sound::Bell}) {
        notes.setBit(++note);
        const auto reader = openSound(QCoreApplication::applicationDirPath(), sound);
        synth->addSound(new juce::SamplerSound({}, *reader, notes, note, fadeSeconds, fadeSeconds,
                                               longestSeconds));
    }
    synth->setCurrentPlaybackSampleRate(sampleRate);
    return {[synth] { synth->noteOn(1, 1, 1.0F); },
            [synth] {
                synth->noteOn(1, 2, 1.0F);
                synth->noteOn(1, 3, 1.0F);
            },
            [synth](juce::AudioBuffer<float>& buffer) {
                buffer.clear();
                synth->renderNextBlock(buffer, {}, 0, blockSize);
            }};
}

enum class Sounding { Nothing, ThreeLayers, AllVoices };

void measureBlocks(benchmark::State& state, Player (*makePlayer)(), Sounding sounding)
{
    constexpr int requestsUntilAllAreBusy = 13;
    float memory[2][blockSize] = {};
    float* channels[2] = {memory[0], memory[1]};
    Player player;
    const auto playBlock = [&] {
        // Made anew, as a device's block is: nobody knows yet that it is clear.
        juce::AudioBuffer<float> buffer(channels, 2, blockSize);
        player.playBlock(buffer);
    };
    int played = blocksOfARound;
    while (state.KeepRunning()) {
        if (played == blocksOfARound) {
            state.PauseTiming();
            played = 0;
            player = makePlayer();
            if (sounding == Sounding::ThreeLayers)
                player.beep();
            for (int i = 0; sounding == Sounding::AllVoices && i < requestsUntilAllAreBusy; ++i) {
                player.clickAndBell();
                playBlock();
            }
            playBlock();
            state.ResumeTiming();
        }
        playBlock();
        ++played;
    }
}

void addAudioRow(const char* name, Sounding sounding)
{
    const auto side = [sounding](Player (*makePlayer)()) {
        return [=](benchmark::State& state) { measureBlocks(state, makePlayer, sounding); };
    };
    constexpr double goal = 1.05;
    addRow({name, goal, limit}, side(enginePlayer), side(synthesiserPlayer));
}
} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv) || !makeSounds())
        return EXIT_FAILURE;
    addAudioRow("audio block, silent", Sounding::Nothing);
    addAudioRow("audio block, three layers", Sounding::ThreeLayers);
    addAudioRow("audio block, 39 voices", Sounding::AllVoices);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
