// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/row.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <ctime>

double residentBytesOf(const QByteArray& process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(QString::fromLatin1(process)));
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("VmRSS:"))
                return line.simplified().split(' ').value(1).toDouble() * 1024;
    return 0;
}

namespace
{
/// Starts a program and returns once its first frame was painted; false if none was.
bool start(QProcess& process, const QString& program)
{
    constexpr int patienceMs = 30000;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", ZORVI_FIRST_FRAME_FOLDER);
    environment.insert("QT_QPA_GENERIC_PLUGINS", "zorvi_first_frame");
    environment.remove("ALSA_CONFIG_PATH"); // it is to look for sound devices
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, QStringList());
    return process.waitForReadyRead(patienceMs);
}

void startProcess(benchmark::State& state, const QString& program)
{
    while (state.KeepRunning()) {
        QProcess process;
        QElapsedTimer time;
        time.start();
        if (!start(process, program))
            state.SkipWithError("no frame was painted");
        state.SetIterationTime(static_cast<double>(time.nsecsElapsed()) / 1e9);
        process.kill();
        process.waitForFinished();
    }
}

double cpuSecondsOf(const QProcess& process)
{
    clockid_t clock{};
    timespec used{};
    clock_getcpuclockid(static_cast<pid_t>(process.processId()), &clock);
    clock_gettime(clock, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

/// The CPU time of a program that is left alone for a minute; what it holds in memory goes along.
void idle(benchmark::State& state, const QString& program)
{
    constexpr unsigned long settlingSeconds = 3; // the station has connected its unit by then
    constexpr unsigned long idleSeconds = 60;
    while (state.KeepRunning()) {
        QProcess process;
        start(process, program);
        QThread::sleep(settlingSeconds);
        const double before = cpuSecondsOf(process);
        QThread::sleep(idleSeconds);
        state.SetIterationTime(cpuSecondsOf(process) - before);
        state.counters["resident"] = residentBytesOf(QByteArray::number(process.processId()));
        process.kill();
        process.waitForFinished();
    }
}

/// A row whose floor is an empty window of the station's size, as a process.
void addProcessRow(const Row& row, void (*measure)(benchmark::State&, const QString&),
                   const QString& station, int repetitions)
{
    using std::placeholders::_1;
    const auto floor = QStringLiteral(ZORVI_EMPTY_WINDOW);
    for (auto* side : {addSide(row, "station", std::bind(measure, _1, station)),
                       addSide(row, "floor", std::bind(measure, _1, floor))})
        side->UseManualTime()->Iterations(1)->Repetitions(repetitions);
}
} // namespace

void addProcessRows()
{
    addProcessRow({"process start to first frame", 2}, startProcess, QStringLiteral(ZORVI_STATION),
                  15);
    addProcessRow({"idle for 60 s, unit connected", 0, 0.6}, idle,
                  QStringLiteral(ZORVI_IDLE_STATION), 1);
}
