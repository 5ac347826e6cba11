// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMutex>
#include <QObject>
#include <QVector>

/// Shares sensor values between the toolkit's threads: the raw values of a parser and the processed
/// values of a processor. The base has a mutex for each array, the subclass has the arrays.
class Quillon_SensorValuesMonitor : public QObject
{
    Q_OBJECT

public:
    explicit Quillon_SensorValuesMonitor(QObject* parent);
    ~Quillon_SensorValuesMonitor() override;

    /// Each call gets or replaces a whole array, of any length. From any thread.
    virtual QVector<float> getRawSensorValues() = 0;
    virtual void setRawSensorValues(QVector<float> values) = 0;
    virtual QVector<float> getProcessedSensorValues() = 0;
    virtual void setProcessedSensorValues(QVector<float> values) = 0;

protected:
    QMutex rawValuesMutex;
    QMutex processedValuesMutex;
};
