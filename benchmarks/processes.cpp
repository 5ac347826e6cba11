// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/residentmemory.h"
#include "benchmarks/row.h"

#include <QElapsedTimer>
#include <QMap>
#include <QProcess>
#include <QThread>

#include <ctime>

namespace
{
constexpr int patienceMs = 30000;

void start(QProcess& process, const QString& program)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", ZORVI_FIRST_FRAME_FOLDER);
    environment.insert("QT_QPA_GENERIC_PLUGINS", "zorvi_first_frame");
    environment.remove("ALSA_CONFIG_PATH"); // as a process of its own it looks for sound devices
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, QStringList());
}

/// From the start of the process until its first frame was painted.
void startProcess(benchmark::State& state, const QString& program)
{
    while (state.KeepRunning()) {
        QProcess process;
        QElapsedTimer time;
        time.start();
        start(process, program);
        if (!process.waitForReadyRead(patienceMs))
            state.SkipWithError("no frame was painted");
        state.SetIterationTime(static_cast<double>(time.nsecsElapsed()) / 1e9);
        process.kill();
        process.waitForFinished(patienceMs);
    }
}

/// What a process takes that is left alone for a minute.
struct Idling {
    double cpuSeconds = 0;
    double residentBytes = 0;
};

double cpuSecondsOf(qint64 process)
{
    clockid_t clock{};
    timespec used{};
    clock_getcpuclockid(static_cast<pid_t>(process), &clock);
    clock_gettime(clock, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

/// Measured once for each program; two rows ask.
Idling idlingOf(const QString& program)
{
    constexpr unsigned long settlingSeconds = 3; // the station has connected its unit by then
    constexpr unsigned long idleSeconds = 60;
    static QMap<QString, Idling> measured;
    if (!measured.contains(program)) {
        QProcess process;
        start(process, program);
        process.waitForReadyRead(patienceMs);
        QThread::sleep(settlingSeconds);
        const double before = cpuSecondsOf(process.processId());
        QThread::sleep(idleSeconds);
        const double after = cpuSecondsOf(process.processId());
        measured.insert(program,
                        {after - before, residentBytesOf(QByteArray::number(process.processId()))});
        process.kill();
        process.waitForFinished(patienceMs);
    }
    return measured.value(program);
}

void idle(benchmark::State& state, const QString& program)
{
    while (state.KeepRunning())
        state.SetIterationTime(idlingOf(program).cpuSeconds);
}

void rememberIdle(benchmark::State& state, const QString& program)
{
    while (state.KeepRunning())
        state.SetIterationTime(1);
    state.counters["bytes"] = idlingOf(program).residentBytes;
}

using OfProcess = void (*)(benchmark::State&, const QString&);

/// A row whose floor is an empty window of the station's size, as a process.
void addProcessRow(const Row& row, OfProcess measure, const QString& station, int repetitions)
{
    const std::array<benchmark::internal::Benchmark*, 2> sides = addSides(
        row, [=](auto& state) { measure(state, station); },
        [=](auto& state) { measure(state, QStringLiteral(ZORVI_EMPTY_WINDOW)); });
    for (auto* side : sides)
        side->UseManualTime()->Iterations(1)->Repetitions(repetitions);
}
} // namespace

void addProcessRows()
{
    constexpr int starts = 15;
    const auto idleStation = QStringLiteral(ZORVI_IDLE_STATION);
    addProcessRow({"process start to first frame", 2}, startProcess, QStringLiteral(ZORVI_STATION),
                  starts);
    addProcessRow({"idle for 60 s, unit connected: CPU", 0, 0.6}, idle, idleStation, 1);
    addProcessRow({"idle, unit connected: memory", 1.25}, rememberIdle, idleStation, 1);
}
