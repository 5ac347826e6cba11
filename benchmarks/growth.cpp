// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "app/testlog.h"
#include "benchmarks/residentmemory.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "simulator/simulatedunit.h"
#include "simulator/unitscript.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>

#include <malloc.h>

// How the cost of one of something grows with how many there are or were.

namespace
{
/// A unit that is plugged in, and what the panels have heard of it.
class ConnectedUnit
{
public:
    explicit ConnectedUnit(MainWindow& window)
        : station(window)
    {
        unit.plug();
        station.slot_PollDevices();
        QObject::connect(&station, &MainWindow::signal_DistributeMIDI, &counter,
                         [this] { ++heard; });
    }
    ConnectedUnit(const ConnectedUnit&) = delete;
    ConnectedUnit& operator=(const ConnectedUnit&) = delete;
    ~ConnectedUnit()
    {
        unit.unplug();
        station.slot_PollDevices();
    }

    /// Sends and waits until the panels have heard everything.
    void send(const UnitScript& messages)
    {
        for (const UnitStep& step : messages)
            unit.send(step.message);
        sent += messages.size();
        while (heard < sent)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    MainWindow& station;
    SimulatedUnit unit;
    QObject counter; // lives on the panels' thread
    std::size_t sent = 0;
    std::size_t heard = 0;
};

void noteMemory(benchmark::State& state)
{
    malloc_trim(0);
    state.counters["bytes"] = residentBytesOf("self");
}

/// The armed fader goes up and down and never to its end, as many messages as the argument says.
void sendMessages(benchmark::State& state, MainWindow& station)
{
    constexpr int burst = 100;
    const UnitScript sweep = unitscript::good(roster::firstFader);
    const UnitScript part(sweep.begin(), sweep.begin() + burst);
    const Shown shown(station);
    ConnectedUnit unit(station);
    while (state.KeepRunning())
        for (std::int64_t sent = 0; sent < state.range(0); sent += burst)
            unit.send(part);
    state.counters["things"] = static_cast<double>(state.range(0));
    noteMemory(state);
}

/// Lets the half second before the notice pass at once, and closes the notice.
void endRun()
{
    for (QObject* timer : QAbstractEventDispatcher::instance()->findChildren<QObject*>())
        if (timer->inherits("QSingleShotTimer")) {
            QTimer::singleShot(0, [] {
                if (auto* notice = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    notice->accept();
            });
            QTimerEvent timeout(0);
            QCoreApplication::sendEvent(timer, &timeout);
        }
}

/// Whole units, one after the other, log and notice included.
void testUnits(benchmark::State& state, MainWindow& station)
{
    UnitScript work;
    for (const int component : unitscript::runOrder(false)) {
        const UnitScript steps = unitscript::good(component);
        work.insert(work.end(), steps.begin(), steps.end());
    }
    const Shown shown(station);
    while (state.KeepRunning())
        for (std::int64_t run = 0; run < state.range(0); ++run) {
            ConnectedUnit unit(station);
            unit.send(work);
            endRun();
        }
    state.counters["things"] = static_cast<double>(state.range(0));
    noteMemory(state);
}

/// One log of a new serial number, with as many others in the folder as the argument says.
void writeLog(benchmark::State& state, MainWindow& station)
{
    const QString application = QCoreApplication::applicationDirPath();
    const QString serial = QStringLiteral("new");
    const QString path = testlog::path(application, serial);
    station.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
    station.slot_OutputLog();
    QDir folder(application + QStringLiteral("/Logs"));
    for (auto others = static_cast<int>(folder.count()) - 2; others <= state.range(0); ++others)
        QFile::copy(path, testlog::path(application, QString::number(others)));
    while (state.KeepRunning()) {
        state.PauseTiming();
        QFile::remove(path);
        state.ResumeTiming();
        station.slot_OutputLog();
    }
}

/// One poll without a unit, with as many other ports as the argument says.
void poll(benchmark::State& state, MainWindow& station)
{
    std::vector<std::unique_ptr<juce::MidiOutput>> ports;
    ports.reserve(static_cast<std::size_t>(state.range(0)));
    for (int port = 0; port < state.range(0); ++port)
        ports.push_back(juce::MidiOutput::createNewDevice("Port " + juce::String(port)));
    while (state.KeepRunning())
        station.slot_PollDevices();
}
} // namespace

void addBenchmarks(MainWindow& station)
{
    const auto add = [&station](const char* name, void (*measure)(benchmark::State&, MainWindow&)) {
        return benchmark::RegisterBenchmark(
                   name, [&station, measure](benchmark::State& state) { measure(state, station); })
            ->UseRealTime();
    };
    constexpr int tens = 10;
    // The long ones by the time that all threads compute, which other programs do not add to.
    add("messages", sendMessages)
        ->RangeMultiplier(tens)
        ->Range(1000, 1000000)
        ->Iterations(1)
        ->MeasureProcessCPUTime()
        ->Repetitions(2);
    add("runs", testUnits)
        ->RangeMultiplier(tens)
        ->Range(1, 1000)
        ->Iterations(1)
        ->MeasureProcessCPUTime();
    add("logs", writeLog)->RangeMultiplier(tens)->Range(1, 100000)->Repetitions(5);
    add("ports", poll)->Arg(1)->Arg(2)->Arg(5)->Arg(10)->Arg(20)->Arg(50)->Arg(100)->Repetitions(5);
}
