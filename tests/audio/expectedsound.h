// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "audio/audioengine.h"

#include <QString>

#include <vector>

/// What a request is to sound like, worked out from the sound files alone: the reference that the
/// engine and the recordings of it are held against.

inline constexpr double fileRate = 44100.0;
inline constexpr double inaudible = 0.001;

/// One sound file played at a pitch and a level.
struct Layer {
    QString sound; ///< "Beep", "Click" or "Bell"
    int semitones; ///< up from the file's own pitch
    double level;
};

/// What the station asks the engine for, and the layers that are to sound.
struct Request {
    void (AudioEngine::*slot)();
    std::vector<Layer> layers;
};
Q_DECLARE_METATYPE(const Request*)

extern const Request beep;
extern const Request click;
extern const Request bell;

/// The samples of a sound file beside the test, -1 to 1.
std::vector<double> soundSamples(const QString& sound);

/// All layers of a request together on a device of that rate in Hz, behind the sounds' attack.
std::vector<double> samplesOf(const Request& request, double rate = fileRate);

/// How far two sounds are apart; what lies behind the end of either is silence.
double distance(const std::vector<double>& a, const std::vector<double>& b);
double peak(const std::vector<double>& samples);
