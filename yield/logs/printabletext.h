// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

/// The text for a terminal or a page: control and format characters, and line ends, are replaced by
/// U+FFFD. A serial can hold any of them.
QString printableText(const QString& text);
