// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "sensor/quillon_sensorvaluesmonitor.h"

/// The tester's monitor: both arrays, 256 zeros at the start. An array is shared, not copied, when
/// it is handed over; a later change does not alter it.
class Quillon_Zorvi_0908_AssemblyTester_Monitor : public Quillon_SensorValuesMonitor
{
    Q_OBJECT

public:
    explicit Quillon_Zorvi_0908_AssemblyTester_Monitor(QObject* parent);
    ~Quillon_Zorvi_0908_AssemblyTester_Monitor() override;

    QVector<float> getRawSensorValues() override;
    void setRawSensorValues(QVector<float> values) override;
    QVector<float> getProcessedSensorValues() override;
    void setProcessedSensorValues(QVector<float> values) override;

private:
    QVector<float> rawValues;
    QVector<float> processedValues;
};
