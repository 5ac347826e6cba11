// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/outboxstatus.h"

#include "yield/logs/logfiles.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace
{
constexpr int minuteSeconds = 60;
constexpr int hourSeconds = 3600;

/// When the newest file of the outbox and Stored was written. Stored itself counts: it was made
/// with the outbox, and the logs of before were imported then.
QDateTime newestFile(const QString& outbox)
{
    const QString stored = outbox + "/Stored";
    QDateTime newest = QFileInfo(stored).lastModified();
    QDirIterator inOutbox(outbox, QDir::Files);
    QDirIterator inStored(stored, QDir::Files, QDirIterator::Subdirectories);
    for (QDirIterator* files : {&inOutbox, &inStored})
        while (files->hasNext()) {
            files->next();
            newest = std::max(newest, files->fileInfo().lastModified());
        }
    return newest;
}

/// Empty if there is none.
QString newerLog(const QString& logs, const QDateTime& newest)
{
    for (const QString& path : logfiles::filesOf(logs)) {
        QString reason;
        if (newest.secsTo(QFileInfo(path).lastModified()) < minuteSeconds)
            continue;
        const auto file = logfiles::read(path, reason);
        if (file && file->log.marks.any())
            return path;
    }
    return {};
}
} // namespace

bool OutboxStatus::needsAttention(const QDateTime& now) const
{
    const bool isLate = pending > 0 && oldest.secsTo(now) >= hourSeconds;
    return isLate || !rejected.empty() || !newerLog.isEmpty();
}

OutboxStatus outboxstatus::read(const QString& logs)
{
    const Outbox outbox(logs);
    if (!outbox.exists())
        throw OutboxError("missing, nothing collects");
    OutboxStatus status;
    const QStringList names = outbox.pending();
    status.pending = names.size();
    status.oldest = QDateTime::currentDateTime();
    for (const QString& name : names)
        if (const QFileInfo info(outbox.pathOf(name)); info.exists()) // or just collected
            status.oldest = std::min(status.oldest, info.lastModified());
    status.rejected = outbox.rejected();
    status.newerLog = newerLog(logs, newestFile(outbox.path()));
    return status;
}
