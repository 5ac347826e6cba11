// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <memory>

namespace juce
{
class AudioFormatReader;
}

/// The three sounds: WAV files in the application directory.
enum class Sound { Beep, Click, Bell };

/// Opens a sound's file in a directory; null if it is missing or no WAV file. The length is that of
/// the file, also where the header says more.
std::unique_ptr<juce::AudioFormatReader> openSound(const QString& directory, Sound sound);

/// Why the sounds in a directory cannot be played: one sentence that names the file; empty if they
/// can. A sound that is shorter than its header says can be played.
QString soundFileProblem(const QString& directory);
