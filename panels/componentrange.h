// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// One value band that a control must reach.
struct ComponentRange {
    float min; ///< Lowest value that counts, inclusive.
    float max; ///< Highest value that counts, inclusive.
    float
        covered; ///< 0 until reached under test, then 1; a float because the log prints it as one.
};
