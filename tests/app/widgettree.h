// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

class QWidget;

/// A line for each widget, from the bottom of the stack to the top, children indented: its class,
/// its name, its place and what its form sets. Panels of a kind come in full once.
QString widgetTree(const QWidget& widget);
