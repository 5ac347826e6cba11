// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QByteArray>

/// The report as one HTML page, UTF-8, with its charts and its style sheet embedded: it needs no
/// script and no other file.
QByteArray reportPage(const Report& report);

/// Every figure of the page as one JSON object, UTF-8; docs/quality-guide.md lists the names, which
/// dashboards and scripts rely on.
QByteArray reportJson(const Report& report);
