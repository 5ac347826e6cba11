// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

class QIODevice;
class QSqlDatabase;

/// Counts all attempts of a database. False, with a problem for people, if it cannot be read.
bool readReport(QSqlDatabase& database, const ReportRequest& request, Report& report,
                QString& problem);

/// Writes the report as one HTML file (UTF-8) that needs nothing else. False, with a problem for
/// people, if the database cannot be read or the output does not take it; what was written then is
/// not whole.
bool writeReport(QSqlDatabase& database, const ReportRequest& request, QIODevice& output,
                 QString& problem);
