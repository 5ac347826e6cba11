// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/attemptrules.h"

#include <QDateTime>

#include <algorithm>
#include <tuple>

namespace
{
/// How long after a log the same run may leave another one.
constexpr qint64 sameRunSeconds = 30 * 60;
/// The same once the last control has a mark: the run is over as soon as that is worked.
constexpr qint64 lastControlSeconds = 60;

/// The last control, in the order of a run, with a mark; -1 without one.
int lastControl(const BandMarks& marks)
{
    std::size_t mark = marks.size();
    while (mark > 0 && !marks[mark - 1])
        --mark;
    return mark == 0 ? -1 : bandmarks::bandOf(mark - 1).componentNum;
}

/// What logs of one unit are sorted by. Within one second the marks can only have grown; packed
/// marks are compared so that the order of different marks, as many, is always the same.
auto place(const QString& testedAt, const QByteArray& station, const BandMarks& marks)
{
    return std::make_tuple(testedAt, station, marks.count(), bandmarks::packed(marks));
}

/// Whether a log is the same attempt saved again: "Save Log" in mid-run, the end of the run later.
/// latest is the latest log of the attempt, later the next log of the same unit and station.
bool isSavedAgain(const StationLog& latest, const StationLog& later)
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
    return attemptrules::secondsBetween(latest.testedAt, later.testedAt) <=
           (last == roster::lastComponent ? lastControlSeconds : sameRunSeconds);
}
} // namespace

BandMarks attemptrules::channelButtonMarks()
{
    BandMarks marks;
    for (int band = 0; band < bandmarks::bandCount(roster::channelButton); ++band)
        marks.set(bandmarks::markIndex(roster::channelButton, band));
    return marks;
}

std::vector<StationLog> attemptrules::attemptsOf(std::vector<StationLog> logs)
{
    std::sort(logs.begin(), logs.end(), [](const StationLog& left, const StationLog& right) {
        return place(left.testedAt, {}, left.marks) < place(right.testedAt, {}, right.marks);
    });
    std::vector<StationLog> attempts;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        // The log before is the latest one of the last attempt, and has all its marks.
        if (i == 0 || !isSavedAgain(logs[i - 1], logs[i]))
            attempts.push_back(logs[i]);
        else if (attempts.back().marks != logs[i].marks)
            attempts.back() = logs[i];
    }
    return attempts;
}

bool attemptrules::isBefore(const Attempt& left, const Attempt& right)
{
    return place(left.testedAt, left.station.toUtf8(), left.marks) <
           place(right.testedAt, right.station.toUtf8(), right.marks);
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
        outcome.abortedAt = end;
    const auto tried = outcome.abortedAt ? bandmarks::markIndex(end, 0) : marks.size();
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
