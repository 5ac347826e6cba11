// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitscript.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class SimulatedUnit;

/// Plays scripts on a simulated unit, step by step at a pace. Lives on the thread of its event
/// loop; the unit is the caller's and must outlive it.
class UnitPlayer : public QObject
{
    Q_OBJECT

public:
    explicit UnitPlayer(SimulatedUnit& unit, QObject* parent = nullptr);

    /// Messages per second, above 0; 200 if not set.
    void setPace(double messagesPerSecond);
    /// How long the cable stays out, and how long a plugged-in unit then keeps still so that the
    /// station finds it again; in ms.
    void setCablePause(int ms);

    /// Starts a script, in place of one that is still playing.
    void play(UnitScript steps);
    /// Ends what is playing, without the signal.
    void stop();
    bool isPlaying() const { return timer.isActive(); }

Q_SIGNALS:
    /// The last step of the script was taken.
    void signal_Finished();

private Q_SLOTS:
    void slot_Tick();

private:
    void take(const UnitStep& step);

    SimulatedUnit& unit;
    QTimer timer;
    double messagesPerSecond = 200.0;
    int cablePauseMs = 2500;
    UnitScript script;
    std::size_t next = 0;
    QElapsedTimer sinceLast;
    double owed = 0.0; ///< Messages that the time passed so far entitles to, not yet sent.
    int pauseMs = 0;
};
