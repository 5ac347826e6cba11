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
/// After a late tick at most 20 ms of messages are sent, two at least; the rest of the delay is
/// dropped.
constexpr double maxTickSeconds = 0.02;
constexpr double minBurst = 2.0;
} // namespace

UnitPlayer::UnitPlayer(SimulatedUnit& simulatedUnit, QObject* parent)
    : QObject(parent)
    , unit(simulatedUnit)
{
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, SIGNAL(timeout()), this, SLOT(slot_Tick()));
}

void UnitPlayer::setPace(double newPace)
{
    pace = newPace;
}

void UnitPlayer::setCablePause(int ms)
{
    cablePauseMs = ms;
}

void UnitPlayer::play(UnitScript steps)
{
    script = std::move(steps);
    next = 0;
    budget = 0.0;
    pauseMs = 0;
    sinceLast.start();
    timer.start(std::max(1, static_cast<int>(std::lround(msPerSecond / pace))));
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
        budget += std::min(static_cast<double>(sinceLast.nsecsElapsed()) * pace / nsPerSecond,
                           std::max(minBurst, maxTickSeconds * pace));
    pauseMs = 0;
    sinceLast.start();

    while (next < script.size() && pauseMs == 0 && budget >= script[next].wait)
        run(script[next++]);

    if (next == script.size() && pauseMs == 0) {
        timer.stop();
        Q_EMIT signal_Finished();
    }
}

void UnitPlayer::run(const UnitStep& step)
{
    switch (step.action) {
    case UnitStep::Action::Send:
        unit.send(step.message);
        budget -= step.wait;
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
