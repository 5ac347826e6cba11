// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/reportfile.h"

#include "yield/figures/reportcounter.h"
#include "yield/logs/attemptrules.h"
#include "yield/page/page.h"
#include "yield/store/attemptreader.h"

#include <QIODevice>

#include <algorithm>
#include <vector>

bool readReport(QSqlDatabase& database, const ReportRequest& request, Report& report,
                QString& problem)
{
    std::vector<Attempt> attempts;
    if (!attemptreader::forEach(
            database, [&](const Attempt& attempt) { attempts.push_back(attempt); }, problem))
        return false;
    std::stable_sort(attempts.begin(), attempts.end(), [](const Attempt& a, const Attempt& b) {
        return a.serial == b.serial ? attemptrules::isBefore(a, b) : a.serial < b.serial;
    });
    ReportRequest dated = request;
    if (!dated.now.isValid())
        dated.now = QDateTime::currentDateTime();
    ReportCounter counter(dated);
    for (const Attempt& attempt : attempts)
        counter.add(attempt);
    report = counter.finish();
    return true;
}

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
