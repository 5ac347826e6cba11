// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/reportfile.h"

#include "yield/figures/reportcounter.h"
#include "yield/intake/progress.h"
#include "yield/page/page.h"
#include "yield/store/attemptreader.h"
#include "yield/store/databaseerror.h"

namespace
{
void checkStation(const QString& name, const std::vector<StationNews>& known)
{
    QStringList names;
    for (const StationNews& news : known)
        names << news.station;
    if (!name.isEmpty() && !names.isEmpty() && !names.contains(name))
        throw DatabaseError(
            DatabaseError::Kind::Unusable,
            QString("no station is named \"%1\"; there are: %2").arg(name, names.join(", ")));
}
} // namespace

Report readReport(Database& database, const ReportRequest& request)
{
    ReportRequest dated = request;
    if (!dated.now.isValid())
        dated.now = QDateTime::currentDateTime();
    dated.news = attemptreader::newestLogs(database, dated.now);
    checkStation(dated.station, dated.news);
    ReportCounter counter(dated);
    Progress progress("attempts");
    attemptreader::forEachByUnit(database, [&](const Attempt& attempt) {
        counter.add(attempt);
        progress.add(1);
    });
    return counter.finish();
}

bool writeReport(Database& database, const ReportRequest& request, QIODevice& output)
{
    return page::write(readReport(database, request), output);
}
