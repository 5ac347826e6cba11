// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QVector>

/// What controls and their bands are called where people read about them.
namespace controlnames
{
/// "Fader 3", with the number that the log's heading gives; componentNum 0 to 43.
QString control(int componentNum);

/// The values of one band: "10 to 19"; of a button "released" or "pressed".
QString band(int componentNum, int band);

/// The values of several bands, ascending, neighbours joined: "0 to 19, 120 to 127"; "all" if they
/// are all bands of the control.
QString bands(int componentNum, const QVector<int>& bands);
} // namespace controlnames
