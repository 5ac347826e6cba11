// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

/// The stations' wall clock as text, yyyy-MM-ddTHH:mm:ss. It sorts by time.
namespace walltime
{
/// The same on a computer in any time zone; less than 0 if the second time is the earlier one.
qint64 secondsBetween(const QString& earlier, const QString& later);
} // namespace walltime
