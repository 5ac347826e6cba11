// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/attempt.h"

#include <QByteArray>
#include <QString>

/// Attempts as text for people and for other programs. Serials and names of stations are text from
/// a keyboard.
namespace attempttext
{
/// One line about an attempt: when, where, and what it missed.
QString line(const Attempt& attempt);

/// The head of the CSV, and one record, ended by CR LF. UTF-8. A text that a spreadsheet would run
/// as a formula has an apostrophe before it.
QByteArray csvHead();
QByteArray csv(const Attempt& attempt);

/// One JSON object, UTF-8, on one line without an end.
QByteArray json(const Attempt& attempt);
} // namespace attempttext
