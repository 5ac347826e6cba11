// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitscript.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class SimulatedUnit;

/// Plays scripts on a simulated unit, step by step at a pace, on its own thread's event loop. The
/// unit must outlive it.
class UnitPlayer : public QObject
{
    Q_OBJECT

public:
    explicit UnitPlayer(SimulatedUnit& unit, QObject* parent = nullptr);

    /// Messages per second, above 0; 200 by default.
    void setPace(double pace);
    /// How long the cable stays out, and how long the unit then sends nothing so that the station
    /// finds it again; in ms.
    void setCablePause(int ms);

    /// Plays a script; one that is still playing ends.
    void play(UnitScript steps);
    /// Ends the script without the signal.
    void stop();
    bool isPlaying() const { return timer.isActive(); }

Q_SIGNALS:
    /// The script is over.
    void signal_Finished();

private Q_SLOTS:
    void slot_Tick();

private:
    void run(const UnitStep& step);

    SimulatedUnit& unit;
    QTimer timer;
    double pace = 200.0;
    int cablePauseMs = 2500;
    UnitScript script;
    std::size_t next = 0;
    QElapsedTimer sinceLast;
    double budget = 0.0; ///< Messages that may be sent by now.
    int pauseMs = 0;
};
