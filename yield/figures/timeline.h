// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/limits.h"

#include <QDate>
#include <QMap>
#include <QString>
#include <QVector>

/// The trend of a report: its days, or its weeks or months where there are too many days for one
/// chart.
struct Timeline {
    struct Period {
        int slot;      ///< On the axis, from 0; a period without units leaves its slot empty.
        QString name;  ///< "Monday, 9 Nov 2026", "Week of 9 Nov 2026", "November 2026".
        QString label; ///< On the axis: "9 Nov", "Nov 26".
        Tally tally;
        QDate begin = {};
    };

    QString period; ///< "day", "week" or "month"; empty without days.
    QVector<Period> periods;
    int maxLabelLength = 6;
};

Timeline timelineOf(const QMap<QDate, Tally>& days);
