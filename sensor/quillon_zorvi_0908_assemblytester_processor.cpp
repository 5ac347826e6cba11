// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"

#include "sensor/quillon_sensorvaluesmonitor.h"
#include "sensor/sensorvalues.h"

namespace
{
constexpr int tickIntervalMs = 10;
}

Quillon_Zorvi_0908_AssemblyTester_Processor::Quillon_Zorvi_0908_AssemblyTester_Processor(
    Quillon_SensorValuesMonitor* valuesMonitor, QObject* parent)
    : QObject(parent)
    , monitor(valuesMonitor)
    , rawValues(initialSensorValues())
    , processedValues(initialSensorValues())
{
    tickTimer.start(tickIntervalMs, this);
}

Quillon_Zorvi_0908_AssemblyTester_Processor::~Quillon_Zorvi_0908_AssemblyTester_Processor() =
    default;

void Quillon_Zorvi_0908_AssemblyTester_Processor::timerEvent(QTimerEvent*)
{
    rawValues = monitor->getRawSensorValues();
    monitor->setProcessedSensorValues(processedValues);
}
