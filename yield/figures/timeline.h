// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

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

    QString period; ///< "day", "week" or "month".
    QVector<Period> periods;
    int slotCount = 0;
    int maxLabelLength = 6;
};

Timeline timelineOf(const QMap<QDate, Tally>& days);

/// Stations as periods, with gaps between them: no line connects them. Names too long for their
/// slots keep their ends, which differ.
Timeline stationTimeline(const QMap<QString, StationReport>& stations);
