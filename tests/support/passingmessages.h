// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <QVector>

/// What makes a control pass, in as few messages as it has bands. The numbers are written out here
/// once more, from the unit's own tables, so that a wrong one in the station is found.
QVector<juce::MidiMessage> passingMessages(int component);
