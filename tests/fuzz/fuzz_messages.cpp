// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The message path: whatever comes in at the MIDI callback, every panel is in one of its states.
// A case is a row of messages, each behind a byte with its length; length 0 is a press on "Skip
// Sensor >>".

#include "tests/support/station.h"

#include <iostream>

namespace
{
MainWindow* window = nullptr;
StateWatch* watch = nullptr;
} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never deleted: libFuzzer leaves the process without returning from its main.
    new QApplication(*argc, *argv);
    station::quiet();
    window = new MainWindow;
    watch = new StateWatch(*window);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    window->slot_Init();
    const auto* const end = data + size;
    while (data < end) {
        const int length = static_cast<int>(std::min<std::ptrdiff_t>(*data, end - data - 1));
        ++data;
        if (length == 0)
            window->slot_SkipCurrentSensorPressed();
        else
            window->handleIncomingMidiMessage(nullptr, {data, length});
        data += length;
        // The last control is for others: the end of a run writes a log.
        if (watch->armed == roster::lastComponent)
            window->slot_Init();
    }
    if (const QString problem = watch->problem(); !problem.isEmpty()) {
        std::cerr << qPrintable(problem) << '\n';
        std::abort();
    }
    return 0;
}
