// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// Keeps JUCE's MIDI input thread running until the process ends, with an input of its own that
/// is sent nothing. In JUCE 7 that thread takes up to 100 ms to end after the last input was
/// stopped: to close an input in that time blocks the caller, and an input started in that time
/// never hears anything. JUCE 8 does not need this. Does nothing where the system has no virtual
/// ports, or no MIDI yet; may be called again and again, on the GUI thread.
void keepMidiInputThreadRunning();
