// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "audio/audioengine.h"

#include <algorithm>
#include <cmath>
#include <vector>

/// Plays an engine without a device.

inline constexpr double rate = 44100.0;
inline constexpr double inaudible = 0.001;

/// What the engine plays on one channel, block after block.
inline std::vector<double> play(AudioEngine& engine, std::size_t samples, int blockSize = 512,
                                int channels = 2)
{
    std::vector<double> heard;
    juce::AudioBuffer<float> buffer(channels, blockSize);
    while (heard.size() < samples) {
        // What a device left in its buffer must not be heard.
        for (int channel = 0; channel < channels; ++channel)
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.7F, blockSize);
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        const float* last = buffer.getReadPointer(channels - 1);
        heard.insert(heard.end(), last, last + blockSize);
    }
    heard.resize(samples);
    return heard;
}

/// How far two sounds are apart; what lies behind the end of either is silence.
inline double distance(const std::vector<double>& a, const std::vector<double>& b)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i)
        largest =
            std::max(largest, std::abs((i < a.size() ? a[i] : 0.0) - (i < b.size() ? b[i] : 0.0)));
    return largest;
}

inline double peak(const std::vector<double>& samples)
{
    return distance(samples, {});
}
