// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QMap>
#include <QString>

/// Texts, pictures and the rows of tables as markup, by the name of their place in page.html.
using Parts = QMap<QString, QString>;

/// Days, stations, attempts and units.
Parts yieldParts(const Report& report);
/// What was missed, and where runs ended early.
Parts controlParts(const Report& report);
