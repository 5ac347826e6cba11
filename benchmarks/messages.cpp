// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/bare.h"
#include "benchmarks/foreignthread.h"
#include "benchmarks/row.h"
#include "panels/componentroster.h"
#include "simulator/unitscript.h"

#include <QCoreApplication>

namespace
{
/// A burst from the foreign thread, then all that the GUI thread has to do about it. A burst, so
/// that waking a thread does not hide what a message costs.
void measureBursts(benchmark::State& state, const std::function<void(const MidiMessage&)>& send)
{
    constexpr int burst = 64;
    const MidiMessage message = unitscript::good(roster::firstFader).front().message;
    ForeignThread midiThread;
    while (state.KeepRunning()) {
        midiThread.run([&] {
            for (int i = 0; i < burst; ++i)
                send(message);
        });
        QCoreApplication::processEvents();
    }
    setPerIteration(state, burst);
}

/// The first fader is armed, so its panel judges in full; nothing is shown and nothing moves.
void judge(benchmark::State& state, MainWindow& station)
{
    measureBursts(state, [&](const MidiMessage& message) {
        station.handleIncomingMidiMessage(nullptr, message);
    });
}

/// The same message through 44 bare queued slots of 44 plain QObjects.
void callBareSlots(benchmark::State& state)
{
    BareBroadcast sender;
    measureBursts(
        state, [&](const MidiMessage& message) { Q_EMIT sender.signal_DistributeMIDI(message); });
}
} // namespace

void addMessageRows(MainWindow& station)
{
    addRow(
        {"message judged by 44 panels", 1.15}, [&](auto& state) { judge(state, station); },
        callBareSlots);
}
