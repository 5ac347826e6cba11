// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QSize>

class Html;

/// The control surface as the station's window lays it out, each control coloured by how often its
/// first attempt missed a band.
namespace surface
{
/// The size of a kind's panel in the window, in pixels.
QSize panelSize(roster::Kind kind);

void draw(Html& html, const Report& report);
} // namespace surface
