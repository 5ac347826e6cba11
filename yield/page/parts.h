// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QMap>
#include <QString>

/// Texts, pictures and the rows of tables as markup, by the name of their place in page.html.
using Parts = QMap<QString, QString>;

/// Stations' ages and the last days: there without a unit, too.
Parts recentParts(const Report& report);

/// For a report with units: days, stations and attempts; what was missed, and where runs ended
/// early; units one by one.
Parts yieldParts(const Report& report);
Parts controlParts(const Report& report);
Parts unitParts(const Report& report);
