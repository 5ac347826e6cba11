// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include "yield/logs/walltime.h"

#include <algorithm>

namespace
{
/// How long after a log the same run may leave another one.
constexpr qint64 sameRunSeconds = 30 * 60;
/// The same once the last control has a mark: the run is over as soon as that is worked.
constexpr qint64 lastControlSeconds = 60;

BandMarks marksOf(int componentNum)
{
    BandMarks marks;
    for (int band = 0; band < bandmarks::bandCount(componentNum); ++band)
        marks.set(bandmarks::markIndex(componentNum, band));
    return marks;
}

/// The last control, in the order of a run, with a mark; -1 without one.
int lastControl(const BandMarks& marks)
{
    std::size_t mark = marks.size();
    while (mark > 0 && !marks[mark - 1])
        --mark;
    return mark == 0 ? -1 : bandmarks::bandOf(mark - 1).componentNum;
}

BandMarks marksBefore(const BandMarks& marks, int componentNum)
{
    BandMarks before;
    for (std::size_t mark = 0; mark < bandmarks::markIndex(componentNum, 0); ++mark)
        before[mark] = marks[mark];
    return before;
}

/// Within one second the marks can only have grown. Packed marks are compared so that the order of
/// different marks, as many, is always the same.
bool hasFewerMarks(const BandMarks& left, const BandMarks& right)
{
    if (left.count() != right.count())
        return left.count() < right.count();
    return bandmarks::packed(left) < bandmarks::packed(right);
}

bool isEarlier(const attemptrules::Save& left, const attemptrules::Save& right)
{
    if (left.testedAt != right.testedAt)
        return left.testedAt < right.testedAt;
    return hasFewerMarks(left.marks, right.marks);
}
} // namespace

bool attemptrules::isAttempt(const BandMarks& marks)
{
    return marks.any();
}

bool attemptrules::showsComponent18(const BandMarks& marks)
{
    static const BandMarks ofChannelButton = marksOf(roster::channelButton);
    return (marks & ofChannelButton).any();
}

bool attemptrules::isSavedAgain(const Save& latest, const Save& later)
{
    if ((latest.marks & ~later.marks).any())
        return false;
    // A run works the controls in their order and never goes back. Where the later log has more
    // bands of a control that the run had left, the unit was tested again, and what it missed the
    // first time must be kept.
    const int last = lastControl(latest.marks);
    if (marksBefore(latest.marks, last) != marksBefore(later.marks, last))
        return false;
    return walltime::secondsBetween(latest.testedAt, later.testedAt) <=
           (last == roster::lastComponent ? lastControlSeconds : sameRunSeconds);
}

attemptrules::Attempts attemptrules::grouped(std::vector<Save> saves)
{
    std::sort(saves.begin(), saves.end(), isEarlier);
    Attempts result;
    for (std::size_t i = 0; i < saves.size(); ++i) {
        // The log before is the latest one of the last attempt, and has all its marks.
        if (i == 0 || !isSavedAgain(saves[i - 1], saves[i])) {
            result.attempts.push_back(saves[i]);
        } else if (result.attempts.back().marks == saves[i].marks) {
            result.others.push_back(saves[i]);
        } else {
            result.others.push_back(result.attempts.back());
            result.attempts.back() = saves[i];
        }
    }
    return result;
}

bool attemptrules::isBefore(const Attempt& left, const Attempt& right)
{
    if (left.testedAt != right.testedAt)
        return left.testedAt < right.testedAt;
    if (left.station != right.station)
        return left.station.toUtf8() < right.station.toUtf8();
    return hasFewerMarks(left.marks, right.marks);
}

bool attemptrules::isTested(int componentNum, bool tests18)
{
    return componentNum != roster::powerButton &&
           (tests18 || componentNum != roster::channelButton);
}

attemptrules::Outcome attemptrules::outcomeOf(const BandMarks& marks, bool tests18)
{
    static const BandMarks ofChannelButton = marksOf(roster::channelButton);
    const BandMarks counted = tests18 ? marks : marks | ofChannelButton;
    Outcome outcome;
    if (counted.all())
        return outcome;
    const int last = lastControl(tests18 ? marks : marks & ~ofChannelButton);
    int untried = 0;
    for (int c = roster::lastComponent; c > last; --c)
        if (isTested(c, tests18)) {
            outcome.endedAt = c;
            ++untried;
        }
    // A last control without any mark was tried: it may be dead.
    if (untried < 2)
        outcome.endedAt.reset();
    const int end = outcome.endedAt ? bandmarks::firstMark(*outcome.endedAt) : bandMarkCount;
    for (std::size_t mark = 0; mark < static_cast<std::size_t>(end); ++mark)
        if (!counted[mark])
            outcome.missed.push_back(bandmarks::bandOf(mark));
    return outcome;
}
