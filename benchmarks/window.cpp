// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/baseline.h"
#include "benchmarks/row.h"
#include "simulator/unitscript.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <QWindow>

namespace
{
using Send = std::function<void(const MidiMessage&)>;

/// All positions of the first fader, one after the other from 0.
const UnitScript sweep = unitscript::good(roster::firstFader);

/// Handles pending events and paints what they changed, which processEvents leaves to its next
/// call.
void paintChanges(QWidget& window)
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(&window, QEvent::UpdateRequest);
}

/// Shows a window and returns once its first frame was painted.
void showPainted(QWidget& window)
{
    window.show();
    while (!window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    paintChanges(window);
}

/// Does a job to its end on another thread than the GUI's, as JUCE's MIDI thread does.
void runOnOtherThread(const std::function<void()>& job)
{
    QThreadPool::globalInstance()->start(job);
    QThreadPool::globalInstance()->waitForDone();
}

/// A burst, then all that the GUI thread has to do about it. A burst, so that waking a thread does
/// not hide what a message costs. Nothing is shown and nothing moves.
void measureBursts(benchmark::State& state, const Send& send)
{
    constexpr int burst = 64;
    while (state.KeepRunning()) {
        runOnOtherThread([&] {
            for (int i = 0; i < burst; ++i)
                send(sweep.front().message);
        });
        QCoreApplication::processEvents();
    }
    state.counters["per_iteration"] = burst;
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
            runOnOtherThread([&] { send(sweep.at(i).message); });
            paintChanges(window);
        }
    }
    window.hide();
    state.counters["per_iteration"] = messages;
}

void callEmptySlots(benchmark::State& state)
{
    BaselineBroadcast sender;
    measureBursts(state, [&](const auto& m) { Q_EMIT sender.signal_DistributeMIDI(m); });
}

void sweepBaseline(benchmark::State& state)
{
    BaselineStation window;
    BaselineBroadcast sender;
    QObject::connect(&sender, SIGNAL(signal_DistributeMIDI(MidiMessage)), &window,
                     SLOT(slot_ReceiveMIDI(MidiMessage)));
    measureSweeps(
        state, window, [&] { window.armFirstFader(); },
        [&](const auto& m) { Q_EMIT sender.signal_DistributeMIDI(m); });
}

/// Construction and the first frame; what comes after is not measured.
template <typename Window>
void construct(benchmark::State& state)
{
    while (state.KeepRunning()) {
        auto window = std::make_unique<Window>();
        showPainted(*window);
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}
} // namespace

void addWindowRows(MainWindow& station)
{
    const Send send = [&](const auto& m) { station.handleIncomingMidiMessage(nullptr, m); };
    const auto rearm = [&] { station.slot_Init(); };
    // The first fader is armed, so its panel judges in full.
    addRow(
        "message judged by 44 panels", "1.15", [=](auto& s) { measureBursts(s, send); },
        callEmptySlots);
    addRow(
        "message of a fader sweep, painted", "1.2",
        [=, &station](auto& s) { measureSweeps(s, station, rearm, send); }, sweepBaseline);
    addRow("window constructed and painted", "1.3", construct<MainWindow>,
           construct<BaselineStation>);
}
