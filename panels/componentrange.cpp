// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/componentrange.h"

QVector<ComponentRange> positionBands()
{
    constexpr int bandCount = 13;
    constexpr int bandWidth = 10;

    QVector<ComponentRange> bands;
    bands.reserve(bandCount);
    for (int i = 0; i < bandCount; ++i) {
        const int min = bandWidth * i;
        bands.append({static_cast<float>(min), static_cast<float>(min + bandWidth - 1), 0.0F});
    }
    return bands;
}
