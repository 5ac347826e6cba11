// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/reportfile.h"

#include "yield/page/page.h"

#include <QIODevice>

bool writeReport(QSqlDatabase& database, const ReportRequest& request, QIODevice& output,
                 QString& problem)
{
    Report report;
    if (!readReport(database, request, report, problem))
        return false;
    if (page::write(report, output))
        return true;
    problem = QStringLiteral("the page cannot be written: %1").arg(output.errorString());
    return false;
}
