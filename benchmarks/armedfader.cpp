// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/bare.h"
#include "benchmarks/foreignthread.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "simulator/unitscript.h"

#include <QFrame>

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
            paintChanges(window);
            state.ResumeTiming();
        }
        const MidiMessage message = sweep.at(*value++).message;
        midiThread.run([&] { send(message); });
        paintChanges(window);
    }
}

/// The two rows: the slider moves, or a band is covered as well.
enum class What { Moves, CoversBands };

void judge(benchmark::State& state, MainWindow& station, What what)
{
    const Send send = [&](const MidiMessage& message) {
        station.handleIncomingMidiMessage(nullptr, message);
    };
    if (what == What::CoversBands)
        return measureShown(
            state, station, bandAfterBand, [&] { station.slot_Init(); }, send);
    const MidiMessage coversBand = sweep.at(withinABand.back()).message;
    measureShown(
        state, station, withinABand, [&] { send(coversBand); }, send);
}

/// 44 queued slots, one of which sets a slider, and its repaint; where a band is covered, also one
/// style sheet on one label and its repaint.
void showBare(benchmark::State& state, QWidget& window, const QWidget& panel, What what)
{
    BareFader fader(panel, what == What::CoversBands);
    BareBroadcast sender(&fader);
    const Send send = [&](const MidiMessage& message) {
        Q_EMIT sender.signal_DistributeMIDI(message);
    };
    if (what == What::CoversBands)
        return measureShown(
            state, window, bandAfterBand, [&] { fader.blank(); }, send);
    measureShown(
        state, window, withinABand, [] {}, send);
}

/// The floor: the widgets that change, alone in a window.
void showAlone(benchmark::State& state, What what)
{
    BareFaderWindow window;
    showBare(state, window, *window.panel(), what);
}

/// Another floor, which tells what the station's code adds to its own widgets: the same widgets
/// among all others of the bare forms, the panel under test on its blue ground.
void showInBareForms(benchmark::State& state, What what)
{
    BareStation window;
    QWidget* panel = window.panel(roster::firstFader);
    auto* ground = panel->findChild<QFrame*>(QStringLiteral("frame"));
    ground->lower();
    ground->setStyleSheet(QStringLiteral("QFrame{border:none; background: blue;}"));
    panel->setAttribute(Qt::WA_OpaquePaintEvent);
    showBare(state, window, *panel, what);
}

void addRows(MainWindow& station, const Row& row, const Row& inBareForms, What what)
{
    const auto judged = [&station, what](auto& state) { judge(state, station, what); };
    addRow(row, judged, [what](auto& state) { showAlone(state, what); });
    addRow(inBareForms, judged, [what](auto& state) { showInBareForms(state, what); });
}
} // namespace

void addArmedFaderRows(MainWindow& station)
{
    addRows(station, {"armed fader moves, window shown", 1.15},
            {"armed fader moves, against the bare forms", 1.15}, What::Moves);
    addRows(station, {"band newly covered, window shown", 1.2},
            {"band newly covered, against the bare forms", 1.2}, What::CoversBands);
}
