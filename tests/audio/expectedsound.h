// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_formats/juce_audio_formats.h>

#include <QCoreApplication>
#include <QString>

#include <algorithm>
#include <vector>

// What requests are to sound like: the library's sampler plays each layer alone, and the layers are
// added up.

using Samples = std::vector<float>;

inline constexpr double fileRate = 44100.0;
inline constexpr float inaudible = 0.001F;

enum class Request { None, Beep, Click, Bell };

/// A request and the device's sample at which it begins.
struct Begin {
    Request request;
    int at = 0;
};

struct Layer {
    Request request;
    const char* sound;
    int semitones; ///< Up from the file's own pitch.
    float level;
    double fadeSeconds; ///< At its start, and when it is stopped.
};
inline constexpr Layer layers[] = {{Request::Beep, "Beep", 0, 100 / 127.0F, 0.005},
                                   {Request::Beep, "Click", -1, 100 / 127.0F, 0.01},
                                   {Request::Beep, "Bell", -2, 100 / 127.0F, 0.005},
                                   {Request::Click, "Click", 0, 20 / 127.0F, 0.01},
                                   {Request::Click, "Bell", -1, 20 / 127.0F, 0.005},
                                   {Request::Bell, "Bell", 0, 50 / 127.0F, 0.005}};

/// "Beep", "Click" or "Bell": the file beside the test.
inline QString soundPath(const QString& sound)
{
    return QCoreApplication::applicationDirPath() + "/Zorvi_AssemblyTest_" + sound + ".wav";
}

/// Adds a layer that begins at a sample and is stopped at a later one. Of a file the first ten
/// seconds are played.
inline void add(Samples& mix, const Layer& layer, int begin, int stop, double rate)
{
    constexpr int note = 60;
    constexpr double maxSeconds = 10.0;
    const juce::File file(soundPath(layer.sound).toStdString());
    const std::unique_ptr<juce::AudioFormatReader> reader(
        juce::WavAudioFormat().createReaderFor(file.createInputStream().release(), true));
    juce::BigInteger notes;
    notes.setRange(0, 2 * note, true);
    juce::Synthesiser sampler;
    sampler.addVoice(new juce::SamplerVoice);
    sampler.addSound(new juce::SamplerSound({}, *reader, notes, note, layer.fadeSeconds,
                                            layer.fadeSeconds, maxSeconds));
    sampler.setCurrentPlaybackSampleRate(rate);

    const double seconds = std::min(maxSeconds, static_cast<double>(file.getSize()) / fileRate);
    const int length = static_cast<int>(1.2 * seconds * rate); // lower notes take longer
    juce::AudioBuffer<float> buffer(1, length);
    buffer.clear();
    sampler.noteOn(1, note + layer.semitones, layer.level);
    const int untilStop = std::min(length, stop - begin);
    sampler.renderNextBlock(buffer, {}, 0, untilStop);
    sampler.noteOff(1, note + layer.semitones, 0.0F, true);
    if (untilStop < length)
        sampler.renderNextBlock(buffer, {}, untilStop, length - untilStop);
    mix.resize(std::max(mix.size(), static_cast<std::size_t>(begin + length)));
    juce::FloatVectorOperations::add(&mix[static_cast<std::size_t>(begin)],
                                     buffer.getReadPointer(0), length);
}

/// All requests together on a device of that rate in Hz. A request stops the one like it.
inline Samples mixOf(const std::vector<Begin>& requests, double rate = fileRate)
{
    Samples mix;
    for (auto begin = requests.begin(); begin != requests.end(); ++begin) {
        const auto next = std::find_if(begin + 1, requests.end(), [&](const Begin& later) {
            return later.request == begin->request;
        });
        for (const Layer& layer : layers)
            if (layer.request == begin->request)
                add(mix, layer, begin->at, next == requests.end() ? INT_MAX : next->at, rate);
    }
    return mix;
}

inline float peak(const Samples& samples)
{
    float largest = 0.0F;
    for (const float sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

/// How far two sounds are apart; what lies after the end of either is silence.
inline float distance(Samples a, const Samples& b)
{
    a.resize(std::max(a.size(), b.size()));
    for (std::size_t i = 0; i < b.size(); ++i)
        a[i] -= b[i];
    return peak(a);
}
