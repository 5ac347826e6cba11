// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/messages.h"

#include <QDeadlineTimer>
#include <QString>

#include <unistd.h>

/// Prints every few seconds how much of something long is done; on a terminal only.
struct Progress {
    static constexpr int pauseMs = 3000;

    QString what; ///< Such as "logs".
    int done = 0;
    QDeadlineTimer nextLine{pauseMs};

    void add(int more)
    {
        done += more;
        if (!nextLine.hasExpired())
            return;
        nextLine.setRemainingTime(pauseMs);
        if (isatty(STDERR_FILENO) != 0)
            messages::warn(QString("%1 %2 ...").arg(done).arg(what));
    }
};
