// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logimport.h"

#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/logs/printabletext.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

namespace
{
/// So many logs are stored in one transaction: few enough that others wait for a moment only.
constexpr int batchSize = 1000;

/// A log that cannot be stored is found by halves, so that it stops no other.
void storeBatch(Database& database, const Station& station, const QStringList& files,
                const logimport::Listener& listener)
{
    QStringList paths;
    std::vector<LogFile> logs;
    for (const QString& file : files) {
        QString reason;
        if (auto log = logfiles::read(file, reason)) {
            paths << file;
            logs.push_back(std::move(*log));
        } else {
            listener.refused(file, reason);
        }
    }
    StoreCounts counts;
    try {
        counts = attemptstore::store(database, station, logs);
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Data || paths.isEmpty())
            throw;
        if (paths.size() == 1)
            return listener.refused(paths.constFirst(), error.text());
        const int half = paths.size() / 2;
        storeBatch(database, station, paths.mid(0, half), listener);
        return storeBatch(database, station, paths.mid(half), listener);
    }
    listener.stored(paths, counts);
}
} // namespace

void logimport::store(Database& database, const Station& station, const QStringList& paths,
                      const Listener& listener)
{
    QStringList files;
    for (const QString& path : paths)
        files += logfiles::filesOf(path);
    // Also without a log: the database remembers what the station tests.
    for (int begin = 0; begin == 0 || begin < files.size(); begin += batchSize)
        storeBatch(database, station, files.mid(begin, batchSize), listener);
}

QStringList logimport::doubtsAbout(const StoreCounts& counts)
{
    QStringList doubts;
    if (counts.future > 0)
        doubts << QString("%1 logs have a date in the future: is the station's clock right?")
                      .arg(counts.future);
    if (counts.otherStations > 0)
        doubts << QString("%1 logs are known under another station too: was --station mistyped? "
                          "\"station rename\" puts it right")
                      .arg(counts.otherStations);
    return doubts;
}

QString logimport::refusal(const QString& path, const QString& reason)
{
    return QString("%1: not imported: %2").arg(printableText(path), printableText(reason));
}

int logimport::run(const ImportRequest& request, QTextStream& out, QTextStream& errors)
{
    Database database(request.database, Database::Access::Write);
    schema::migrate(database);
    StoreCounts counts;
    int refused = 0;
    Progress progress{"logs"};
    Listener listener;
    listener.refused = [&](const QString& path, const QString& reason) {
        // A log that its station replaces is gone for a moment.
        if (logfiles::isGone(path) && !request.paths.contains(path))
            return;
        errors << refusal(path, reason) << Qt::endl;
        ++refused;
    };
    listener.stored = [&](const QStringList& paths, const StoreCounts& more) {
        counts += more;
        progress.add(paths.size());
    };
    QString failure;
    try {
        store(database, request.station, request.paths, listener);
    } catch (const DatabaseError& error) {
        failure = error.text();
    }
    out << counts.added + counts.duplicates + counts.empty + refused << " logs: " << counts.added
        << " new, " << counts.duplicates << " already known, " << counts.empty
        << " without any mark, " << refused << " refused" << Qt::endl;
    for (const QString& doubt : doubtsAbout(counts))
        errors << doubt << Qt::endl;
    if (!failure.isEmpty())
        errors << "the database failed: " << failure << "; what is in it stays, import again"
               << Qt::endl;
    return !failure.isEmpty() ? exitstatus::failed : refused == 0 ? 0 : exitstatus::incomplete;
}
