// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// Keeps JUCE's MIDI input thread running until the process ends, with an input of its own that
/// nobody speaks to. That thread takes up to 100 ms to end after the last input was stopped:
/// whoever closes an input in that time waits for it, and an input started in that time hears
/// nothing, ever. Does nothing where the system has no virtual ports, or no MIDI yet; may be called
/// as often as one likes, on the GUI thread.
void keepMidiInputThreadRunning();
