// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QVector>

/// An array of the toolkit's sensor values as it is at the start: 256 entries of 0.
inline QVector<float> initialSensorValues()
{
    return QVector<float>(256, 0.0F);
}
