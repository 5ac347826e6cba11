// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// Makes the captions fit the places that the window's layout, fixed in pixels, has for them. To be
/// called before the application object is made; does nothing where the system's own captions fit.
void fitCaptionsToLayout();
