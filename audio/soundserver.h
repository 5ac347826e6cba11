// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// Tests the system's default sound device before the station opens it.
///
/// A sound server may accept a stream and never run it: one that has been stopped, or PipeWire
/// without any device. JUCE (7, 8 and 9) then waits in opening or closing the device, for ever or
/// until it ends its thread by force, which ends the process.
///
/// The test is done in a child process, which can be ended at any time. The child is a fork of this
/// process: ALSA is called in it, which a fork of a process with several threads cannot always do.
namespace soundserver
{
/// Starts the test. main() calls this before anything else: the process has one thread then, and
/// the test takes place while the program starts.
void startTest();

/// Whether the default device plays, or cannot be opened at all. Waits for the end of the test, at
/// most four seconds, and prints a warning if it has not ended. True if no test was started.
bool isRunning();
} // namespace soundserver
