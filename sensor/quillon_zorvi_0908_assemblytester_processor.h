// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QVector>

class Quillon_SensorValuesMonitor;

/// The processing stage: every 10 ms, on the thread it lives on, it takes the latest raw values
/// from the monitor and publishes its processed values. The step between the two is empty: the
/// station carries no sensor data, this is the frame that a processing step fits into.
class Quillon_Zorvi_0908_AssemblyTester_Processor : public QObject
{
    Q_OBJECT

public:
    /// Starts ticking at once; the monitor must outlive the last tick.
    Quillon_Zorvi_0908_AssemblyTester_Processor(Quillon_SensorValuesMonitor* monitor,
                                                QObject* parent);
    ~Quillon_Zorvi_0908_AssemblyTester_Processor() override;

protected:
    /// One tick, whichever timer it comes from.
    void timerEvent(QTimerEvent* event) override;

    Quillon_SensorValuesMonitor* monitor;
    QBasicTimer tickTimer;
    QVector<float> rawValues;
    QVector<float> processedValues;
};
