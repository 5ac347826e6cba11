// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_sensorvaluesmonitor.h"

Quillon_SensorValuesMonitor::Quillon_SensorValuesMonitor(QObject* parent)
    : QObject(parent)
{
}

Quillon_SensorValuesMonitor::~Quillon_SensorValuesMonitor() = default;
