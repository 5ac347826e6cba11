// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QMap>
#include <QString>

class Html;

/// What writes the pictures and the rows of tables, by the name of their place in page.html.
using Parts = QMap<QString, void (*)(Html&, const Report&)>;

/// Days, stations and attempts.
Parts yieldParts();
/// What was missed, and where runs ended early.
Parts controlParts();
/// Units one by one.
Parts unitParts();
