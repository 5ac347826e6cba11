// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// A linear scale along y: `lowest` is drawn at `bottom`, `highest` at `top`.
struct Scale {
    double top;
    double bottom;
    double lowest;
    double highest;

    double at(double value) const
    {
        return bottom - (value - lowest) / (highest - lowest) * (bottom - top);
    }
};
