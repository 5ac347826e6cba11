// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>

/// A MIDI sequencer in memory. A program that links the object library zorvi_memory_sequencer gets
/// its functions in place of the system library's, so that JUCE's own MIDI code runs, unchanged,
/// where the kernel has no sequencer. It defines the functions of <alsa/seq.h> that JUCE calls and
/// no others; events go to whoever subscribed to the port that sent them.
///
/// Ports exist within the process only. Everything here may be called from any thread.
namespace memorysequencer
{
/// While on, no port can be made or connected: every attempt to open a device fails. JUCE
/// (7.0.5 and 8.0.6) loses the port on each such attempt and from then on keeps the sequencer open.
void failOpens(bool fail);

/// While on, the sequencer cannot be opened at all, as on a machine without one. It takes effect
/// when JUCE opens it next: in JUCE 7 after the last port of the process was released, in JUCE 8
/// after the last device manager was, too. A port that is asked for while it is on keeps JUCE from
/// ever opening it again.
void setAbsent(bool absent);

/// What exists at this moment, over all clients.
int clientCount();
int portCount();
std::size_t waitingEvents();
} // namespace memorysequencer
