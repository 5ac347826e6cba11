// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "app/testlog.h"
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

namespace
{
/// Plugs a unit in, lets it send so many messages of a script, the same ones again and again, waits
/// until the panels have heard them all, and unplugs it.
void playUnit(MainWindow& station, const UnitScript& script, std::int64_t messages)
{
    constexpr std::int64_t burst = 100;
    SimulatedUnit unit;
    unit.plug();
    station.slot_PollDevices();
    QObject listener; // lives on the panels' thread
    std::int64_t heard = 0;
    QObject::connect(&station, &MainWindow::signal_DistributeMIDI, &listener, [&] { ++heard; });
    for (std::int64_t sent = 0; sent < messages;) {
        unit.send(script.at(static_cast<std::size_t>(sent) % script.size()).message);
        ++sent;
        if (sent % burst == 0 || sent == messages)
            while (heard < sent)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    unit.unplug();
    station.slot_PollDevices();
}

/// Says how many there were, and what is resident after them.
void note(benchmark::State& state)
{
    setPerIteration(state, static_cast<double>(state.range(0)));
    malloc_trim(0);
    state.counters["resident"] = residentBytesOf("self");
}

/// The armed fader goes up and down and never to its end.
void sendMessages(benchmark::State& state, MainWindow& station)
{
    const UnitScript sweep = unitscript::good(roster::firstFader);
    showPainted(station);
    while (state.KeepRunning())
        playUnit(station, {sweep.begin(), sweep.begin() + 100}, state.range(0));
    station.hide();
    note(state);
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
    for (const int componentNum : unitscript::runOrder(false)) {
        const UnitScript steps = unitscript::good(componentNum);
        work.insert(work.end(), steps.begin(), steps.end());
    }
    showPainted(station);
    while (state.KeepRunning())
        for (std::int64_t run = 0; run < state.range(0); ++run) {
            playUnit(station, work, static_cast<std::int64_t>(work.size()));
            endRun();
        }
    station.hide();
    note(state);
}

/// One log of a new serial number, with so many others in the folder.
void writeLog(benchmark::State& state, MainWindow& station)
{
    const QString application = QCoreApplication::applicationDirPath();
    const QString path = testlog::path(application, QStringLiteral("new"));
    station.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(QStringLiteral("new"));
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
} // namespace

void addGrowthRows(MainWindow& station)
{
    const auto add = [&](const char* name, auto* measure, std::int64_t least, std::int64_t most) {
        return benchmark::RegisterBenchmark(
                   name, std::bind(measure, std::placeholders::_1, std::ref(station)))
            ->RangeMultiplier(10)
            ->Range(least, most);
    };
    // The long ones by the time that all threads compute, which other programs do not add to.
    add("growth, messages", sendMessages, 1000, 1000000)->Iterations(1)->MeasureProcessCPUTime();
    add("growth, units tested", testUnits, 1, 1000)->Iterations(1)->MeasureProcessCPUTime();
    add("growth, logs in the folder", writeLog, 1, 100000)->UseRealTime()->Repetitions(5);
}
