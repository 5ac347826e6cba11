// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QString>

/// Figures as the page writes them.
namespace figuretext
{
/// "1,234".
QString count(int number);

/// "1 unit", "1,234 units".
QString units(int number);

/// What one of these says of a number; empty if it is not above 0.
QString ifAny(int number, QString (*text)(int));

/// "97.3 %". Only all of them are "100 %" and only none are "0 %"; "–" of nothing.
QString percent(int part, int whole);

/// "97.3 % (291 of 299)".
QString share(int part, int whole);

/// "Fader 3 (component 3)", and by how many it was missed: "10.0 % (20 of 200)", "not tested here".
QString control(const ControlMisses& control);
QString missed(const ControlMisses& control);
} // namespace figuretext
