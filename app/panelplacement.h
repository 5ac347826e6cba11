// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPoint>

#include <optional>

/// The position of a component's panel in the window, in pixels. faderWidth, the width of a fader
/// panel, sets the pitch. Nothing for the power button, whose panel is not shown.
std::optional<QPoint> panelPlace(int componentNum, int faderWidth);
