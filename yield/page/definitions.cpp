// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/definitions.h"

const QVector<Definition>& definitions()
{
    static const QVector<Definition> all{
        {"Units",
         "Serial numbers, as typed at the stations. A unit belongs to the day and the station of "
         "its first attempt; all its attempts count, later ones and those at other stations too."},
        {"Attempts",
         "Runs with at least one band reached. Of several logs of a run the last one counts. An "
         "imported log that does not name its run is an attempt too."},
        {"Passed",
         "Every band of every tested control was reached. Component 39, the power button, is never "
         "tested; component 18 is tested at TARVEK stations only."},
        {"First-pass yield",
         "Of all units, those whose first attempt passed, at any station. Retests do not count."},
        {"Final yield so far",
         "Of all units, those whose last attempt passed, at any station. It rises as units are "
         "repaired."},
        {"Aborted",
         "Two or more tested controls at the end of the run have no mark at all: the operator "
         "aborted the run, or a board was not plugged in. An aborted attempt did not pass, but the "
         "controls from there on were not tested, so none of them failed."},
        {"False failures",
         "Of the failed attempts, those whose unit was next tested at the same station within an "
         "hour and passed: most likely the test failed, not the unit (NTF, retest OK). Aborted "
         "attempts are ignored."},
        {"Median test time",
         "From the start of a passed attempt to its last log: half of the attempts took longer. Of "
         "a station: of the attempts made there. Attempts without a start, and times below 0 or "
         "over 24 hours, are ignored."},
        {"Control limits",
         "LCL and UCL, the range that chance alone explains for so many units, around the "
         "first-pass yield of all units of this page: from the binomial distribution, with "
         "0.135 % beyond each limit. A point outside most likely has an assignable cause."},
        {"Failed units",
         "Of the units whose first attempt reached the control, those that missed one of its bands "
         "or more."}};
    return all;
}

QString meaningOf(const QString& term)
{
    for (const Definition& each : definitions())
        if (term == each.term)
            return each.meaning;
    return {};
}
