// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <memory>

namespace juce
{
class AudioFormatReader;
}

/// The three sounds, which lie beside the executable as WAV files.
enum class Sound { Beep, Click, Bell };

/// Opens a sound's file in a directory; null where it is missing or no WAV file. One that holds
/// less than its header promises is as long as what it holds.
std::unique_ptr<juce::AudioFormatReader> openSound(const QString& directory, Sound sound);

/// What keeps the sounds in a directory from being played, in one sentence that names the file;
/// empty if nothing does. A sound that is shorter than its header says is played.
QString soundFileProblem(const QString& directory);
