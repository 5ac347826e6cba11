// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/bare.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "simulator/unitscript.h"

#include <QThreadPool>

namespace
{
using Send = std::function<void(const MidiMessage&)>;

/// All positions of the first fader, one after the other from 0.
const UnitScript sweep = unitscript::good(roster::firstFader);

/// Does a job on another thread than the GUI's, as JUCE's MIDI thread would, to its end.
void runElsewhere(const std::function<void()>& job)
{
    QThreadPool::globalInstance()->start(job);
    QThreadPool::globalInstance()->waitForDone();
}

Send toStation(MainWindow& station)
{
    return [&](const MidiMessage& message) { station.handleIncomingMidiMessage(nullptr, message); };
}

Send toSlots(BareBroadcast& sender)
{
    return [&](const MidiMessage& message) { Q_EMIT sender.signal_DistributeMIDI(message); };
}

/// A burst, then all that the GUI thread has to do about it. A burst, so that waking a thread does
/// not hide what a message costs. Nothing is shown and nothing moves.
void measureBursts(benchmark::State& state, const Send& send)
{
    constexpr int burst = 64;
    const MidiMessage message = sweep.front().message;
    while (state.KeepRunning()) {
        runElsewhere([&] {
            for (int i = 0; i < burst; ++i)
                send(message);
        });
        QCoreApplication::processEvents();
    }
    setPerIteration(state, burst);
}

/// The same message through 44 bare queued slots of 44 plain QObjects.
void callBareSlots(benchmark::State& state)
{
    BareBroadcast sender;
    measureBursts(state, toSlots(sender));
}

/// The armed fader goes up to its last band, each message painted before the next is sent.
void measureSweeps(benchmark::State& state, QWidget& window, const std::function<void()>& rearm,
                   const Send& send)
{
    constexpr int messages = 120;
    showPainted(window);
    while (state.KeepRunning()) {
        state.PauseTiming();
        rearm();
        paintChanges(window);
        state.ResumeTiming();
        for (std::size_t i = 0; i < messages; ++i) {
            runElsewhere([&] { send(sweep.at(i).message); });
            paintChanges(window);
        }
    }
    window.hide();
    setPerIteration(state, messages);
}

/// The same with 44 queued slots, one of which moves the slider and colours the squares.
void sweepBareFader(benchmark::State& state)
{
    BareStation bare;
    BareBroadcast sender(&bare);
    measureSweeps(state, bare, std::bind(&BareStation::armFirstFader, &bare), toSlots(sender));
}
} // namespace

void addMessageRows(MainWindow& station)
{
    using std::placeholders::_1;
    const Send send = toStation(station);
    const std::function<void()> rearm = std::bind(&MainWindow::slot_Init, &station);
    // The first fader is armed, so its panel judges in full.
    addRow({"message judged by 44 panels", 1.15}, std::bind(measureBursts, _1, send),
           callBareSlots);
    addRow({"message of a fader sweep, painted", 1.2},
           std::bind(measureSweeps, _1, std::ref(station), rearm, send), sweepBareFader);
}
