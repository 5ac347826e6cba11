// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// One value band that a control must reach, and whether it has.
struct ComponentRange {
    float min; ///< Lowest value of the band, inclusive.
    float max; ///< Highest value of the band, inclusive.
    /// 0, and 1 once a value of the band was seen under test: the number that the log prints.
    float covered;
};
