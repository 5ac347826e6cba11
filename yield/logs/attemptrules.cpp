// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include "yield/logs/walltime.h"

#include <algorithm>
#include <string>

namespace
{
/// How long after a log with a mark of the last control the same run may add more.
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
    const auto end = marks.size() - bandmarks::markIndex(componentNum, 0);
    return marks << end >> end;
}

bool isBefore(const attemptrules::Save& left, const attemptrules::Save& right)
{
    if (left.testedAt != right.testedAt)
        return left.testedAt < right.testedAt;
    // Within one second the marks can only have grown.
    if (left.marks.count() != right.marks.count())
        return left.marks.count() < right.marks.count();
    return bandmarks::packed(left.marks) < bandmarks::packed(right.marks);
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

bool attemptrules::isSavedAgain(const Save& earlier, const Save& later)
{
    if ((earlier.marks & ~later.marks).any())
        return false;
    if (earlier.marks == later.marks)
        return true;
    // A run works the controls in their order and never goes back. Where the later log has more
    // bands of a control that the earlier one had left, the unit was tested again, and what it
    // missed the first time must be kept.
    const int last = lastControl(earlier.marks);
    if (marksBefore(earlier.marks, last) != marksBefore(later.marks, last))
        return false;
    return last != roster::lastComponent ||
           walltime::secondsBetween(earlier.testedAt, later.testedAt) <= lastControlSeconds;
}

attemptrules::Attempts attemptrules::grouped(std::vector<Save> saves)
{
    std::sort(saves.begin(), saves.end(), isBefore);
    Attempts result;
    for (const Save& save : saves) {
        if (result.attempts.empty() || !isSavedAgain(result.attempts.back(), save)) {
            result.attempts.push_back(save);
        } else if (result.attempts.back().marks == save.marks) {
            result.others.push_back(save);
        } else {
            result.others.push_back(result.attempts.back());
            result.attempts.back() = save;
        }
    }
    return result;
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
