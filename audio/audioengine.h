// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "audio/layeredsynthesiser.h"

#include <QElapsedTimer>
#include <QObject>

#include <atomic>

using juce::AudioSource;

/// Beep, click and bell, from WAV files in the application directory, which are read once, at
/// construction. A sound whose file cannot be read stays silent; main checks soundFileProblem()
/// first.
///
/// The slots run on the GUI thread and only set requests; the audio thread plays them in its next
/// block. Requests for the same sound before that block are played once.
class AudioEngine : public QObject, public AudioSource
{
    Q_OBJECT

public:
    AudioEngine();
    ~AudioEngine() override;

    /// Sets the sample rate in Hz, truncated to a whole number. The block size is ignored.
    void prepareToPlay(int samplesPerBlockExpected, double sampleRate) override;
    void releaseResources() override;
    /// Plays the requests and renders one block, on the audio thread. Does not allocate, and takes
    /// only the synthesiser's own lock, which no other thread takes meanwhile. A block without a
    /// buffer leaves the requests for the next.
    void getNextAudioBlock(const juce::AudioSourceChannelInfo& block) override;

    /// Whether the device asks for a block within a second. On the GUI thread.
    bool waitForBlock() const;

public Q_SLOTS:
    /// Requests a beep; see beepdebounce.h for the requests that are dropped.
    void slot_Beep();
    /// Requests a click.
    void slot_Click();
    /// Requests the bell.
    void slot_Ding();
    /// Off: silence at once, and requests are dropped. On: what was sounding goes on.
    void slot_SetAudioOnOff(bool on);

private:
    LayeredSynthesiser synth;
    qint32 sampleRate = 44100;
    // Shared by the GUI thread and the audio thread: one byte each, only loaded and stored.
    std::atomic<bool> playBeep{false};
    std::atomic<bool> playClick{false};
    std::atomic<bool> playBell{false};
    QElapsedTimer beepTimer;
    std::atomic<bool> audioOn{true};    // as the window's check box shows from the start
    std::atomic<quint32> blockCount{0}; // written by the audio thread alone
};
