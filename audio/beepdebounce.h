// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>

/// What happens to a request for a beep.
enum class BeepDecision {
    Sound, ///< It sounds, and the pause starts.
    Rearm, ///< It is dropped, and the next one sounds.
    Drop   ///< It is dropped: the pause is not over.
};

/// Decides on a request. timerValid: the pause after a beep is running; elapsedMs: since that beep.
/// On purpose the first request after the pause makes no sound: a single second touch makes no
/// sound, and a wrong control that is moved all the time beeps now and then.
constexpr BeepDecision decideBeep(bool timerValid, qint64 elapsedMs)
{
    constexpr qint64 pauseMs = 500;
    if (!timerValid)
        return BeepDecision::Sound;
    return elapsedMs > pauseMs ? BeepDecision::Rearm : BeepDecision::Drop;
}
