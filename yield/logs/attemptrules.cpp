// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include <tuple>

namespace
{
/// The last control with a mark, in the order of a run; -1 without a mark.
int lastControl(const BandMarks& marks)
{
    std::size_t mark = marks.size();
    while (mark > 0 && !marks[mark - 1])
        --mark;
    return mark == 0 ? -1 : bandmarks::bandOf(mark - 1).componentNum;
}
} // namespace

BandMarks attemptrules::channelButtonMarks()
{
    BandMarks marks;
    for (int band = 0; band < bandmarks::bandCount(roster::channelButton); ++band)
        marks.set(bandmarks::markIndex(roster::channelButton, band));
    return marks;
}

bool attemptrules::isBefore(const Attempt& left, const Attempt& right)
{
    // Packed marks give an order to different marks of the same number.
    const auto key = [](const Attempt& attempt) {
        return std::make_tuple(attempt.testedAt, attempt.station.toUtf8(), attempt.marks.count(),
                               bandmarks::packed(attempt.marks));
    };
    return key(left) < key(right);
}

attemptrules::Outcome attemptrules::outcomeOf(const BandMarks& marks, bool tests18)
{
    const BandMarks untested = tests18 ? BandMarks() : channelButtonMarks();
    const BandMarks counted = marks | untested;
    Outcome outcome;
    if (counted.all())
        return outcome;
    int end = lastControl(marks & ~untested) + 1;
    while (!isTested(end, tests18))
        ++end;
    // The last control alone has no mark: it was tested, and may be dead.
    if (end < roster::lastComponent)
        outcome.abortedAt = end;
    const auto tested = outcome.abortedAt ? bandmarks::markIndex(end, 0) : marks.size();
    for (std::size_t mark = 0; mark < tested; ++mark)
        if (!counted[mark])
            outcome.missed.push_back(bandmarks::bandOf(mark));
    return outcome;
}
