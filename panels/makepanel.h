// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

/// The panel of a component, 0 to 43, as its kind wants it. A parent owns the panel too: release it
/// to that. On the GUI thread.
std::unique_ptr<ComponentPanel> makePanel(int componentNum, QWidget* parent = nullptr);
