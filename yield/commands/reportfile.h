// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class Database;
class QIODevice;

/// Counts all attempts of a database, up to now if the request does not say otherwise. Throws
/// std::runtime_error, also where the station is not known.
Report readReport(Database& database, const ReportRequest& request);

/// Writes the report as one HTML file (UTF-8) that needs nothing else. False if the output does not
/// take all of it. Throws DatabaseError.
bool writeReport(Database& database, const ReportRequest& request, QIODevice& output);
