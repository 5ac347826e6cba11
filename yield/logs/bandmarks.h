// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/valuebands.h"

#include <QByteArray>

#include <bitset>
#include <cstddef>

namespace bandmarks
{
/// How many bands a log lists for a component, 0 to 43: none for the power button.
constexpr int bandCount(int componentNum)
{
    if (componentNum == roster::powerButton)
        return 0;
    return valuebands::count(roster::kindOf(componentNum));
}

/// The index of the first mark of a component, 0 to 43; for 44 the number of all marks.
constexpr int firstMark(int componentNum)
{
    int mark = 0;
    for (int c = roster::firstComponent; c < componentNum; ++c)
        mark += bandCount(c);
    return mark;
}
} // namespace bandmarks

/// The marks of a log: one bit for each band that a log lists, in the order of the components, the
/// bands of each ascending.
constexpr int bandMarkCount = bandmarks::firstMark(roster::componentCount);
using BandMarks = std::bitset<bandMarkCount>;

namespace bandmarks
{
/// The band that a mark stands for.
struct Band {
    int componentNum;
    int band;
};

/// The index of a band's mark; componentNum 0 to 43, band 0 to bandCount - 1.
constexpr std::size_t markIndex(int componentNum, int band)
{
    return static_cast<std::size_t>(firstMark(componentNum)) + static_cast<std::size_t>(band);
}

/// The band of the mark with that index, 0 to 228.
constexpr Band bandOf(std::size_t mark)
{
    int componentNum = roster::firstComponent;
    auto band = static_cast<int>(mark);
    while (band >= bandCount(componentNum))
        band -= bandCount(componentNum++);
    return {componentNum, band};
}

/// The size of packed marks: mark i is bit i % 8 of byte i / 8, lowest bit first.
constexpr int packedSize = (bandMarkCount + 7) / 8;

QByteArray packed(const BandMarks& marks);

/// bytes: packedSize of them.
BandMarks unpacked(const QByteArray& bytes);
} // namespace bandmarks
