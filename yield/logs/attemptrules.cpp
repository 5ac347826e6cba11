// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include <QDateTime>

#include <algorithm>

namespace
{
/// How long after a log the same run may leave another one.
constexpr qint64 sameRunSeconds = 30 * 60;
/// The same once the last control has a mark: the run is over as soon as that is worked.
constexpr qint64 lastControlSeconds = 60;

BandMarks channelButtonMarks()
{
    BandMarks marks;
    for (int band = 0; band < bandmarks::bandCount(roster::channelButton); ++band)
        marks.set(bandmarks::markIndex(roster::channelButton, band));
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

bool attemptrules::showsComponent18(const BandMarks& marks)
{
    return (marks & channelButtonMarks()).any();
}

bool attemptrules::isSavedAgain(const Save& latest, const Save& later)
{
    if ((latest.marks & ~later.marks).any())
        return false;
    // A run works the controls in their order and never goes back. Where the later log has more
    // bands of a control that the run had left, the unit was tested again, and what it missed the
    // first time must be kept.
    const int last = lastControl(latest.marks);
    const std::size_t end = bandmarks::markIndex(last, 0);
    for (std::size_t mark = 0; mark < end; ++mark)
        if (latest.marks[mark] != later.marks[mark])
            return false;
    return secondsBetween(latest.testedAt, later.testedAt) <=
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
    const BandMarks untested = tests18 ? BandMarks() : channelButtonMarks();
    const BandMarks counted = marks | untested;
    Outcome outcome;
    if (counted.all())
        return outcome;
    int end = lastControl(marks & ~untested) + 1;
    while (!isTested(end, tests18))
        ++end;
    // The last control alone was tried: it may be dead.
    if (end < roster::lastComponent)
        outcome.endedAt = end;
    const auto tried = outcome.endedAt ? bandmarks::markIndex(end, 0) : marks.size();
    for (std::size_t mark = 0; mark < tried; ++mark)
        if (!counted[mark])
            outcome.missed.push_back(bandmarks::bandOf(mark));
    return outcome;
}

qint64 attemptrules::secondsBetween(const QString& earlier, const QString& later)
{
    const auto utc = "Z";
    return QDateTime::fromString(earlier + utc, Qt::ISODate)
        .secsTo(QDateTime::fromString(later + utc, Qt::ISODate));
}
