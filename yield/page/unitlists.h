// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class Html;

/// The page's sections that name units one by one.
namespace unitlists
{
/// Units whose last attempt is not complete.
void writeOpen(Html& html, const Report& report);

/// Units tested more than once.
void writeRepeated(Html& html, const Report& report);
} // namespace unitlists
