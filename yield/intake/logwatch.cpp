// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/logwatch.h"

#include "yield/store/database.h"

#include <QFileInfo>

#include <algorithm>

namespace
{
constexpr int soonMs = 100;
constexpr int minuteMs = 60000;
constexpr int retryMs = 2000;
/// A file that is no log and younger than this may still be being written in place.
constexpr int settlingMs = 2000;
} // namespace

LogWatch::LogWatch(const ImportRequest& what, QTextStream& outStream, QTextStream& errorStream)
    : request(what)
    , out(outStream)
    , errors(errorStream)
{
    lookSoon.setSingleShot(true);
    connect(&watcher, SIGNAL(directoryChanged(QString)), &lookSoon, SLOT(start()));
    connect(&lookSoon, SIGNAL(timeout()), this, SLOT(slot_Look()));
    connect(&lookLater, SIGNAL(timeout()), this, SLOT(slot_Look()));
    connect(&retry, SIGNAL(timeout()), this, SLOT(slot_Retry()));
}

LogWatch::~LogWatch()
{
    if (!toStore.empty())
        errors << QStringLiteral("%1 logs could not be stored; those that still lie in their "
                                 "folder will be read again")
                      .arg(toStore.size())
               << Qt::endl;
}

void LogWatch::start()
{
    lookSoon.setInterval(soonMs);
    lookLater.start(minuteMs);
    slot_Look();
}

void LogWatch::slot_Look()
{
    if (!toRead.isEmpty())
        return lookSoon.start(); // the look before is not over yet
    watchFolders();
    for (const QString& path : request.paths)
        toRead += logfiles::filesOf(path);
    slot_ReadOn();
}

/// Reads one batch, then lets the event loop run: the first look can be at very many logs.
void LogWatch::slot_ReadOn()
{
    const int end = std::min(toRead.size(), logimport::batchSize);
    for (int i = 0; i < end; ++i)
        readFile(toRead.at(i));
    toRead.erase(toRead.begin(), toRead.begin() + end);
    if (!isAway)
        store();
    if (!toRead.isEmpty())
        QTimer::singleShot(0, this, SLOT(slot_ReadOn()));
}

void LogWatch::slot_Retry()
{
    store();
}

/// Folders only: a log is replaced as a whole, and with the old file its watch would be gone.
void LogWatch::watchFolders()
{
    for (const QString& path : request.paths) {
        const QFileInfo info(path);
        const QString folder = info.isDir() ? path : info.path();
        if (!watcher.directories().contains(folder) && QFileInfo(folder).isDir())
            watcher.addPath(folder);
    }
}

void LogWatch::readFile(const QString& path)
{
    const auto stamp = logfiles::stampOf(path);
    const auto isAsIn = [&](const QHash<QString, logfiles::Stamp>& seen) {
        return seen.contains(path) && seen.value(path) == stamp;
    };
    if (isAsIn(seenLogs) || isAsIn(seenOthers))
        return;
    QString reason;
    if (auto log = logfiles::read(path, reason)) {
        toStore.push_back(std::move(*log));
        seenLogs.insert(path, stamp);
    } else if (!logfiles::isGone(path) || request.paths.contains(path)) {
        const qint64 ageMs = QDateTime::currentMSecsSinceEpoch() - stamp.modifiedMs;
        if (ageMs >= 0 && ageMs < settlingMs) {
            QTimer::singleShot(settlingMs, &lookSoon, SLOT(start()));
            return;
        }
        errors << logimport::refusal(path, reason) << Qt::endl;
        seenOthers.insert(path, stamp);
    }
}

/// Stores what was read, or finds out whether the database is still there.
void LogWatch::store()
{
    if (!database && !openDatabase())
        return;
    StoreCounts counts;
    try {
        counts = attemptstore::store(*database, request.station, toStore);
    } catch (const DatabaseError& error) {
        return lose(error.text());
    }
    toStore.clear();
    if (isAway) {
        isAway = false;
        retry.stop();
        seenLogs.clear(); // it may have come back as it was some time ago
        lookSoon.start();
        out << QStringLiteral("the database is back") << Qt::endl;
    }
    if (counts.added > 0)
        out << QStringLiteral("new: %1").arg(counts.added) << Qt::endl;
}

bool LogWatch::openDatabase()
{
    if (wasOpen && !Database::isAddress(request.database) && !QFileInfo::exists(request.database)) {
        lose(QStringLiteral("%1 is gone").arg(request.database)); // with a share, for instance
        return false;
    }
    try {
        database = std::make_unique<Database>(request.database, Database::Access::Write);
        wasOpen = true;
        return true;
    } catch (const DatabaseError& error) {
        if (error.kind() != DatabaseError::Kind::Unusable) {
            lose(error.text());
            return false;
        }
        errors << error.text() << Qt::endl;
    }
    retry.stop();
    Q_EMIT signal_Hopeless();
    return false;
}

void LogWatch::lose(const QString& reason)
{
    database.reset();
    if (!isAway)
        errors << QStringLiteral("the database is away: %1").arg(reason) << Qt::endl;
    isAway = true;
    retry.start(retryMs);
}
