// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>

/// What becomes of a request for the beep.
enum class BeepDecision {
    Sound, ///< Play it, and count the time from here.
    Rearm, ///< Drop it, and let the next one sound.
    Drop   ///< Too soon after the last one.
};

/// Decides on a request: timerValid says whether time is being counted since an accepted beep,
/// elapsedMs how much has gone by. The first request after the pause only arms the debounce again
/// and stays silent, on purpose: a wrong control that is moved on and on beeps now and then, and
/// one that is touched a second time is forgiven.
constexpr BeepDecision decideBeep(bool timerValid, qint64 elapsedMs)
{
    constexpr qint64 pauseMs = 500;
    if (!timerValid)
        return BeepDecision::Sound;
    return elapsedMs > pauseMs ? BeepDecision::Rearm : BeepDecision::Drop;
}
