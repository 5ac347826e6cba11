// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class Database;

/// Counts all attempts of a database, up to now if the request does not say otherwise. Throws
/// std::runtime_error, also where the station is not known.
Report readReport(Database& database, const ReportRequest& request);
