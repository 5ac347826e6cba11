// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// Gives every widget Qt's Fusion style, a light palette and the captions' font, whatever the
/// desktop's theme is or becomes. The window's style sheets fix light backgrounds and leave text
/// and controls to style and palette: a dark theme would make text invisible. After the application
/// object is constructed.
void setAppearance();
