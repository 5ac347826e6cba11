// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/bare.h"
#include "benchmarks/foreignthread.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "simulator/unitscript.h"

#include <QCoreApplication>

namespace
{
using Send = std::function<void(const MidiMessage&)>;
using Prepare = std::function<void()>;

/// All positions of the fader, one after the other from 0.
const UnitScript sweep = unitscript::good(roster::firstFader);
/// Values of one band, so that after the first no band is new.
const std::vector<std::size_t> withinABand{50, 51, 52, 53, 54, 55, 56, 57, 58, 59};
/// One value of each band but the last, with which the control would pass.
const std::vector<std::size_t> bandAfterBand{0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110};

/// Messages of the armed fader from the foreign thread, each one painted in the shown window before
/// the next is sent; `prepare` goes before the first value of each round and is not measured.
void measureShown(benchmark::State& state, QWidget& window, const std::vector<std::size_t>& values,
                  const Prepare& prepare, const Send& send)
{
    const Shown shown(window);
    ForeignThread midiThread;
    auto value = values.end();
    while (state.KeepRunning()) {
        if (value == values.end()) {
            state.PauseTiming();
            value = values.begin();
            prepare();
            QCoreApplication::processEvents();
            state.ResumeTiming();
        }
        const MidiMessage message = sweep.at(*value++).message;
        midiThread.run([&] { send(message); });
        QCoreApplication::processEvents();
    }
}

void moveArmedFader(benchmark::State& state, MainWindow& station)
{
    const Send send = [&](const MidiMessage& message) {
        station.handleIncomingMidiMessage(nullptr, message);
    };
    const MidiMessage coversBand = sweep.at(withinABand.back()).message;
    measureShown(
        state, station, withinABand, [&] { send(coversBand); }, send);
}

/// 44 queued slots, one of which sets a bare slider, and the slider's repaint.
void moveBareSlider(benchmark::State& state)
{
    BareFader fader(false);
    BareBroadcast sender(&fader);
    measureShown(
        state, fader, withinABand, [] {},
        [&](const MidiMessage& message) { Q_EMIT sender.signal_DistributeMIDI(message); });
}

void coverBands(benchmark::State& state, MainWindow& station)
{
    measureShown(
        state, station, bandAfterBand, [&] { station.slot_Init(); },
        [&](const MidiMessage& message) { station.handleIncomingMidiMessage(nullptr, message); });
}

/// The same with one style sheet set on one bare label, and its repaint.
void restyleBareLabels(benchmark::State& state)
{
    BareFader fader(true);
    BareBroadcast sender(&fader);
    measureShown(
        state, fader, bandAfterBand, [&] { fader.blank(); },
        [&](const MidiMessage& message) { Q_EMIT sender.signal_DistributeMIDI(message); });
}
} // namespace

void addArmedFaderRows(MainWindow& station)
{
    addRow(
        {"armed fader moves, window shown", 1.15},
        [&](auto& state) { moveArmedFader(state, station); }, moveBareSlider);
    addRow(
        {"band newly covered, window shown", 1.2}, [&](auto& state) { coverBands(state, station); },
        restyleBareLabels);
}
