// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class QIODevice;

namespace page
{
/// Writes the report as one HTML file, UTF-8, with its pictures and its style in it: it needs no
/// script and no other file. False if the output did not take all of it.
bool write(const Report& report, QIODevice& output);
} // namespace page
