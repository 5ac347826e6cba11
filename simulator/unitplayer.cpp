// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitplayer.h"

#include "simulator/simulatedunit.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double msPerSecond = 1e3;
constexpr double nsPerSecond = 1e9;
/// Of a tick that comes late, more than so many seconds or messages are not made up for: no hand
/// moves in jerks.
constexpr double longestTick = 0.02;
constexpr double smallestBurst = 2.0;
} // namespace

UnitPlayer::UnitPlayer(SimulatedUnit& playedUnit, QObject* parent)
    : QObject(parent)
    , unit(playedUnit)
{
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, SIGNAL(timeout()), this, SLOT(slot_Tick()));
}

void UnitPlayer::setPace(double pace)
{
    messagesPerSecond = pace;
}

void UnitPlayer::setCablePause(int ms)
{
    cablePauseMs = ms;
}

void UnitPlayer::play(UnitScript steps)
{
    script = std::move(steps);
    next = 0;
    owed = 0.0;
    pauseMs = 0;
    sinceLast.start();
    timer.start(std::max(1, static_cast<int>(std::lround(msPerSecond / messagesPerSecond))));
}

void UnitPlayer::stop()
{
    timer.stop();
}

void UnitPlayer::slot_Tick()
{
    if (pauseMs > 0 && sinceLast.elapsed() < pauseMs)
        return;
    if (pauseMs == 0)
        owed += std::min(static_cast<double>(sinceLast.nsecsElapsed()) * messagesPerSecond /
                             nsPerSecond,
                         std::max(smallestBurst, longestTick * messagesPerSecond));
    pauseMs = 0;
    sinceLast.start();

    while (next < script.size() && pauseMs == 0 && owed >= script[next].wait)
        take(script[next++]);

    if (next == script.size() && pauseMs == 0) {
        timer.stop();
        Q_EMIT signal_Finished();
    }
}

void UnitPlayer::take(const UnitStep& step)
{
    switch (step.action) {
    case UnitStep::Action::Send:
        unit.send(step.message);
        owed -= step.wait;
        break;
    case UnitStep::Action::Unplug:
        unit.unplug();
        pauseMs = cablePauseMs;
        break;
    case UnitStep::Action::Replug:
        unit.plug();
        pauseMs = cablePauseMs;
        break;
    }
}
