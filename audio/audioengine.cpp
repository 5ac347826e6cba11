// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"

#include "audio/beepdebounce.h"
#include "audio/soundfiles.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <QCoreApplication>
#include <QThread>

#include <array>

namespace
{
constexpr int voiceCount = 39;
constexpr double longestSampleSeconds = 10.0;
constexpr int channel = 1;

/// The sounds in the order of their construction. On purpose each one answers its own note and
/// those of the sounds before it, so that a request sounds in layers.
struct SoundSetup {
    Sound sound;
    const char* name;
    int note;
    double attackAndReleaseSeconds;
};
constexpr std::array<SoundSetup, 3> soundSetups{{{Sound::Beep, "beep", 1, 0.005},
                                                 {Sound::Click, "click", 2, 0.01},
                                                 {Sound::Bell, "bell", 3, 0.005}}};

/// The note of a request.
struct Note {
    int number;
    float velocity;
};
constexpr Note beepNote{1, 100.0F / 127.0F};
constexpr Note clickNote{2, 20.0F / 127.0F};
constexpr Note bellNote{3, 50.0F / 127.0F};

void playIfRequested(std::atomic<bool>& request, juce::Synthesiser& synth, const Note& note)
{
    if (!request.load(std::memory_order_relaxed))
        return;
    request.store(false, std::memory_order_relaxed);
    synth.noteOn(channel, note.number, note.velocity);
}
} // namespace

AudioEngine::AudioEngine()
{
    synth.clearSounds();
    beepTimer.invalidate();

    const QString directory = QCoreApplication::applicationDirPath();
    std::array<std::unique_ptr<juce::AudioFormatReader>, soundSetups.size()> readers;
    for (std::size_t i = 0; i < soundSetups.size(); ++i)
        readers.at(i) = openSound(directory, soundSetups.at(i).sound);

    for (int i = 0; i < voiceCount; ++i)
        synth.addVoice(new juce::SamplerVoice);

    juce::BigInteger notes;
    for (std::size_t i = 0; i < soundSetups.size(); ++i) {
        const SoundSetup& setup = soundSetups.at(i);
        notes.setBit(setup.note);
        // A sound without samples has no memory to play from.
        if (readers.at(i) != nullptr && readers.at(i)->lengthInSamples > 0)
            synth.addSound(new juce::SamplerSound(
                setup.name, *readers.at(i), notes, setup.note, setup.attackAndReleaseSeconds,
                setup.attackAndReleaseSeconds, longestSampleSeconds));
    }
}

AudioEngine::~AudioEngine() = default;

void AudioEngine::prepareToPlay(int, double rate)
{
    // Truncated on purpose: the rate counts whole samples, and the difference in pitch is not
    // audible.
    sampleRate = static_cast<qint32>(rate);
    synth.setCurrentPlaybackSampleRate(sampleRate);
}

void AudioEngine::releaseResources() {}

void AudioEngine::getNextAudioBlock(const juce::AudioSourceChannelInfo& block)
{
    blockCount.store(blockCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    block.clearActiveBufferRegion();

    if (!audioOn.load(std::memory_order_relaxed)) {
        // Not rendered, so that the voices go on from here when sound is switched on again.
        playBeep.store(false, std::memory_order_relaxed);
        playClick.store(false, std::memory_order_relaxed);
        playBell.store(false, std::memory_order_relaxed);
        return;
    }
    // The requests wait for a block with a buffer.
    if (block.buffer == nullptr)
        return;

    // Checked for every sample, so that a request set during this loop sounds in this block.
    for (int i = 0; i < block.numSamples; ++i) {
        playIfRequested(playBeep, synth, beepNote);
        playIfRequested(playClick, synth, clickNote);
        playIfRequested(playBell, synth, bellNote);
    }
    // On purpose from sample 0, not from the block's start: the blocks of a device start at 0.
    synth.renderNextBlock(*block.buffer, juce::MidiBuffer(), 0, block.numSamples);
}

bool AudioEngine::waitForBlock() const
{
    constexpr qint64 maxWaitMs = 1000;
    const quint32 before = blockCount.load(std::memory_order_relaxed);
    QElapsedTimer waiting;
    waiting.start();
    while (blockCount.load(std::memory_order_relaxed) == before) {
        if (waiting.elapsed() > maxWaitMs)
            return false;
        QThread::msleep(1);
    }
    return true;
}

void AudioEngine::slot_Beep()
{
    const bool counting = beepTimer.isValid();
    switch (decideBeep(counting, counting ? beepTimer.elapsed() : 0)) {
    case BeepDecision::Sound:
        beepTimer.start();
        playBeep.store(true, std::memory_order_relaxed);
        break;
    case BeepDecision::Rearm:
        beepTimer.invalidate();
        break;
    case BeepDecision::Drop:
        break;
    }
}

void AudioEngine::slot_Click()
{
    playClick.store(true, std::memory_order_relaxed);
}

void AudioEngine::slot_Ding()
{
    playBell.store(true, std::memory_order_relaxed);
}

void AudioEngine::slot_SetAudioOnOff(bool on)
{
    audioOn.store(on, std::memory_order_relaxed);
}
