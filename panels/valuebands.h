// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentrange.h"

#include <QVector>

/// The thirteen bands of a control that reports its position, faders and rotaries alike: runs of
/// ten from 0. The last one reaches to 129, past the largest 7-bit value, so that any value from
/// 120 on covers it.
QVector<ComponentRange> positionBands();
