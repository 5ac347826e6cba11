// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

// Both functions draw the captions at the size that the window's layout, fixed in pixels, was made
// for, whatever the desktop says. They do nothing where the system's own captions fit.

/// Settles the font resolution; to be called before the application object is made.
void fitCaptionsToLayout();

/// Settles the font's family and point size; to be called once the application object is made,
/// since that takes over the desktop's fonts.
void setCaptionFont();
