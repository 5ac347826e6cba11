// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QVector>

/// The initial array of sensor values: 256 entries of 0.
inline QVector<float> initialSensorValues()
{
    return QVector<float>(256, 0.0F);
}
