// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "unit/componentroster.h"

#include <QPoint>
#include <QSize>

#include <optional>

/// The size of a kind's panel, in pixels: that of its form.
QSize panelSize(roster::Kind kind);

/// The position of a component's panel in the window, in pixels; componentNum 0 to 43. The width of
/// a fader's panel sets the pitch. Nothing for the power button, whose panel is not shown.
std::optional<QPoint> panelPosition(int componentNum);
