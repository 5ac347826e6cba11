// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPoint>

#include <optional>

/// Where the panel of a component lies in the window, in pixels of the window; faderWidth is the
/// width of one fader panel, which sets the pitch. Nothing for the power button, whose panel is
/// never shown.
std::optional<QPoint> panelPlace(int component, int faderWidth);
