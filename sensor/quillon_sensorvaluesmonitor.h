// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMutex>
#include <QObject>
#include <QVector>

/// The meeting point of the toolkit's threads: the raw values that a parser delivers and the
/// processed values that a processor publishes, each array behind a mutex of its own. The locks are
/// here, the arrays are the subclass's business.
class Quillon_SensorValuesMonitor : public QObject
{
    Q_OBJECT

public:
    explicit Quillon_SensorValuesMonitor(QObject* parent);
    ~Quillon_SensorValuesMonitor() override;

    /// Whole arrays are taken and replaced, whatever their length. Called from any thread.
    virtual QVector<float> getRawSensorValues() = 0;
    virtual void setRawSensorValues(QVector<float> values) = 0;
    virtual QVector<float> getProcessedSensorValues() = 0;
    virtual void setProcessedSensorValues(QVector<float> values) = 0;

protected:
    QMutex rawValuesMutex;
    QMutex processedValuesMutex;
};
