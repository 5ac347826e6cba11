// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/limits.h"

#include <QDate>
#include <QString>

/// Figures as the page writes them.
namespace figuretext
{
/// "1,234".
QString count(int number);

/// "1 unit", "1,234 units".
QString units(int number);

/// "97.3 %". Only all of them are "100 %" and only none are "0 %"; "–" of nothing.
QString percent(int part, int whole);

/// "291 of 299".
QString countOf(int part, int whole);

/// "97.3 % (291 of 299)".
QString share(int part, int whole);

/// "90.0 % to 100 %", of so many units.
QString limits(const Limits& limits, int units);

/// "▼ below", "within" or "▲ above".
QString verdict(Verdict verdict);

/// "Tue 17 Nov 2026".
QString day(const QDate& date);

/// "2026-11-09 06:41" of a time as a log has it; "Mon 9 Nov 06:41" for a late one.
QString minute(const QString& time);
QString moment(const QString& time);

/// "1 minute", "25 minutes", "3 hours", "4 days": whole ones, 2 days or 2 hours and more.
QString duration(qint64 seconds);
} // namespace figuretext
