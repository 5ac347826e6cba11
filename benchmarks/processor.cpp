// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/row.h"
#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"
#include "sensor/sensorvalues.h"

#include <QMutexLocker>

namespace
{
class Ticking : public Quillon_Zorvi_0908_AssemblyTester_Processor
{
public:
    using Quillon_Zorvi_0908_AssemblyTester_Processor::Quillon_Zorvi_0908_AssemblyTester_Processor;
    using Quillon_Zorvi_0908_AssemblyTester_Processor::timerEvent;
};

void tick(benchmark::State& state)
{
    Quillon_Zorvi_0908_AssemblyTester_Monitor monitor(nullptr);
    Ticking processor(&monitor, nullptr);
    while (state.KeepRunning())
        processor.timerEvent(nullptr);
}

/// Two uncontended locks, and a handle copied under each.
void copyTwoHandles(benchmark::State& state)
{
    QMutex mutexes[2];
    const QVector<float> taken = initialSensorValues();
    const QVector<float> published = initialSensorValues();
    QVector<float> raw;
    QVector<float> processed;
    while (state.KeepRunning()) {
        {
            const QMutexLocker locker(&mutexes[0]);
            raw = taken;
        }
        {
            const QMutexLocker locker(&mutexes[1]);
            processed = published;
        }
        benchmark::ClobberMemory();
    }
}
} // namespace

void addProcessorRows()
{
    addRow({"tick of the processor", 1.2}, tick, copyTwoHandles);
}
