// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "audio/layeredsynthesiser.h"

#include <QElapsedTimer>
#include <QObject>

#include <atomic>

using juce::AudioSource;

/// The station's audible feedback: beep, click and bell, from WAV files beside the executable that
/// are decoded once, at construction. A sound whose file cannot be read stays silent; whoever
/// starts the station asks soundFileProblem() first.
///
/// The slots run on the GUI thread and only raise requests; the audio thread takes them up in its
/// next block. Requests for the same sound merge until then.
class AudioEngine : public QObject, public AudioSource
{
    Q_OBJECT

public:
    AudioEngine();
    ~AudioEngine() override;

    /// The rate in Hz, of which the whole part counts; the block size does not matter.
    void prepareToPlay(int samplesPerBlockExpected, double newSampleRate) override;
    void releaseResources() override;
    /// Fills one block, on the audio thread: takes up the requests and renders the voices. Never
    /// allocates or waits; a block without a buffer leaves the requests for the next one.
    void getNextAudioBlock(const juce::AudioSourceChannelInfo& block) override;

public Q_SLOTS:
    /// Requests a beep, unless the last one was too short a time ago: see beepdebounce.h.
    void slot_Beep();
    /// Requests a click; requests within one block sound as one.
    void slot_Click();
    /// Requests the bell.
    void slot_Ding();
    /// Off silences at once and drops requests; on goes on with what was sounding.
    void slot_SetAudioOnOff(bool on);

private:
    LayeredSynthesiser synth;
    qint32 sampleRate = 44100;
    // One byte each between the GUI thread and the audio thread: loads and stores, no
    // read-modify-write.
    std::atomic<bool> playBeep{false};
    std::atomic<bool> playClick{false};
    std::atomic<bool> playBell{false};
    QElapsedTimer beepTimer;
    std::atomic<bool> audioOn{true}; // as the window's check box shows from the start
};
