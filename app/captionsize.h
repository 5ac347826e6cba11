// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

// Both functions set the captions to the size that the window's layout, fixed in pixels, was made
// for, whatever the desktop's settings are. They do nothing where the system's own captions fit.

/// Sets the font resolution; before the application object is constructed.
void fitCaptionsToLayout();

/// Sets the font's family and point size; after the application object is constructed, which takes
/// the desktop's fonts.
void setCaptionFont();
