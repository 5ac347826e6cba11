// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QVector>

/// One value band that a control must reach.
struct ComponentRange {
    float min; ///< Lowest value of the band, inclusive.
    float max; ///< Highest value of the band, inclusive.
    /// 0, and 1 after a value of the band was seen under test. A float because the log prints it.
    float covered;
};

/// The thirteen bands of a fader or a rotary: tens from 0. The last one ends at 129, above the
/// largest 7-bit value, so that every value from 120 on covers it.
QVector<ComponentRange> positionBands();
