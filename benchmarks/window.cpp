// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "app/testlog.h"
#include "benchmarks/bare.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "simulator/unitfault.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

namespace
{
/// Of a unit whose last control was left one band short: with that the run would be over and the
/// log be written.
void reset(benchmark::State& state, MainWindow& station)
{
    const UnitFault fault{Fault::NoHighEnd, roster::lastComponent};
    showPainted(station);
    while (state.KeepRunning()) {
        state.PauseTiming();
        for (const int componentNum : unitscript::runOrder(false))
            for (const UnitStep& step : unitfault::scriptFor(componentNum, fault))
                station.handleIncomingMidiMessage(nullptr, step.message);
        paintChanges(station);
        state.ResumeTiming();
        station.slot_Init();
        paintChanges(station);
    }
    station.hide();
}

/// A log over the one before it, as when a unit is tested again.
void writeLog(benchmark::State& state, MainWindow& station)
{
    while (state.KeepRunning())
        station.slot_OutputLog();
}

/// The same bytes, ready made, to the same place through a bare QSaveFile.
void saveBytes(benchmark::State& state, MainWindow& station)
{
    station.slot_OutputLog();
    const QString path = testlog::path(QCoreApplication::applicationDirPath(), {});
    QFile log(path);
    if (!log.open(QIODevice::ReadOnly))
        return state.SkipWithError("no log was written");
    const QByteArray bytes = log.readAll();
    while (state.KeepRunning()) {
        QSaveFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
        file.commit();
    }
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
    using std::placeholders::_1;
    constexpr double frameSeconds = 1 / 60.0;
    addRow({"44 panels reset and painted", 0, frameSeconds},
           std::bind(reset, _1, std::ref(station)));
    // The floor: the same widget tree and style texts, as uic makes them.
    addRow({"window constructed and painted", 1.3}, construct<MainWindow>, construct<BareStation>);
    addRow({"log built and written", 1.5}, std::bind(writeLog, _1, std::ref(station)),
           std::bind(saveBytes, _1, std::ref(station)));
}
