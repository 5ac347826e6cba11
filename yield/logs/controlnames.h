// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QStringList>

#include <vector>

/// The names of controls and bands in texts for users.
namespace controlnames
{
/// "Fader 3", with the number that the log's heading gives; componentNum 0 to 43.
QString control(int componentNum);

/// The values of one band: "10 to 19"; of a button "released" or "pressed".
QString band(int componentNum, int band);

/// A text for each control with missed bands: "Fader 3: 0 to 19, 120 to 127" or "Fader 3: all".
QStringList missed(const std::vector<bandmarks::Band>& bands);
} // namespace controlnames
