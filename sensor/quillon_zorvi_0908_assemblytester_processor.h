// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QVector>

class Quillon_SensorValuesMonitor;

/// The processing stage: every 10 ms it takes the raw values from the monitor and publishes its
/// processed values, on its own thread. There is no processing step between the two, on purpose:
/// the station has no sensor data.
class Quillon_Zorvi_0908_AssemblyTester_Processor : public QObject
{
    Q_OBJECT

public:
    /// Starts the timer. monitor must outlive the last tick.
    Quillon_Zorvi_0908_AssemblyTester_Processor(Quillon_SensorValuesMonitor* monitor,
                                                QObject* parent);
    ~Quillon_Zorvi_0908_AssemblyTester_Processor() override;

protected:
    /// One tick. The timer's identifier is not compared: the object has one timer.
    void timerEvent(QTimerEvent* event) override;

    Quillon_SensorValuesMonitor* monitor;
    QBasicTimer tickTimer;
    QVector<float> rawValues;
    QVector<float> processedValues;
};
