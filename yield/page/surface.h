// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class QXmlStreamWriter;

/// The control surface as the station's window lays it out, each control coloured by how often its
/// first attempt missed a band.
namespace surface
{
void draw(QXmlStreamWriter& xml, const Report& report);
} // namespace surface
