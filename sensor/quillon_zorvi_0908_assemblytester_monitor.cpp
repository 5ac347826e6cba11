// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"

#include "sensor/sensorvalues.h"

#include <QMutexLocker>

Quillon_Zorvi_0908_AssemblyTester_Monitor::Quillon_Zorvi_0908_AssemblyTester_Monitor(
    QObject* parent)
    : Quillon_SensorValuesMonitor(parent)
    , rawValues(initialSensorValues())
    , processedValues(initialSensorValues())
{
}

Quillon_Zorvi_0908_AssemblyTester_Monitor::~Quillon_Zorvi_0908_AssemblyTester_Monitor() = default;

QVector<float> Quillon_Zorvi_0908_AssemblyTester_Monitor::getRawSensorValues()
{
    const QMutexLocker locker(&rawValuesMutex);
    return rawValues;
}

// The setters swap: the old array is freed with the argument, after the lock is released.
void Quillon_Zorvi_0908_AssemblyTester_Monitor::setRawSensorValues(QVector<float> values)
{
    const QMutexLocker locker(&rawValuesMutex);
    rawValues.swap(values);
}

QVector<float> Quillon_Zorvi_0908_AssemblyTester_Monitor::getProcessedSensorValues()
{
    const QMutexLocker locker(&processedValuesMutex);
    return processedValues;
}

void Quillon_Zorvi_0908_AssemblyTester_Monitor::setProcessedSensorValues(QVector<float> values)
{
    const QMutexLocker locker(&processedValuesMutex);
    processedValues.swap(values);
}
