// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/limits.h"

#include <QDate>
#include <QMap>
#include <QString>
#include <QVector>

/// The days of a report as a chart can show them: as days, or as weeks or months where they are too
/// many for that.
struct Timeline {
    struct Period {
        int slot;     ///< Its place on the axis; a period without units leaves its place empty.
        QString name; ///< "Monday, 9 Nov 2026", "Week of 9 Nov 2026", "November 2026".
        QString shortName; ///< "9 Nov", "Nov 26".
        Tally tally;
    };

    QString unit; ///< "day", "week" or "month".
    QVector<Period> periods;
    int length = 0;  ///< Places on the axis.
    int letters = 7; ///< Of a short name, with room after it.
};

Timeline timelineOf(const QMap<QDate, Tally>& days);
