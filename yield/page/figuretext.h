// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

/// Numbers as the page writes them.
namespace figuretext
{
/// "1,234".
QString count(int number);

/// "1 unit", "1,234 units".
QString units(int number);

/// "97.3 %". Only all of them are "100 %" and only none are "0 %"; "–" of nothing.
QString percent(int part, int whole);

/// "97.3 % (291 of 299)".
QString share(int part, int whole);
} // namespace figuretext
