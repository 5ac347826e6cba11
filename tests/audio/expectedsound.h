// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <vector>

/// What a request is to sound like, worked out from the sound files alone: the reference that the
/// engine and the recordings of it are held against.

/// One sound file played at a pitch and a level.
struct Layer {
    QString sound; ///< "Beep", "Click" or "Bell"
    int semitones; ///< up from the file's own pitch
    double level;
};

/// The layers of the three requests.
std::vector<Layer> beepLayers();
std::vector<Layer> clickLayers();
std::vector<Layer> bellLayers();

/// The samples of a sound file beside the test, -1 to 1.
std::vector<double> soundSamples(const QString& sound);

/// The samples of a layer on a device of that rate in Hz, behind the sound's attack.
std::vector<double> layerSamples(const Layer& layer, double rate);

/// All layers together.
std::vector<double> mixedSamples(const std::vector<Layer>& layers, double rate);
