// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/capture.h"

#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/intake/storeworker.h"
#include "yield/logs/logfiles.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace
{
constexpr qint64 secondMs = 1000;
/// While a folder is away: logs come as soon as it is back.
constexpr qint64 absentMs = 100;
constexpr qint64 longestPauseMs = 30000;
/// A file that has not changed for so long is as its writer wants it. Before, it may be half
/// written, and another change may have the same time.
constexpr qint64 settledMs = 2000;
constexpr std::array<quint64, 2> nothing{};
/// The worker reads all logs at the start; so many are safe even if the database is away.
constexpr int mostInFirstLook = 200;
/// Logs that are read between two looks at the kernel's events.
constexpr int readsBetweenEvents = 16;

/// Whether the kernel names every change. Anywhere else another computer may write, so what is not
/// known is taken for a share.
bool isOfThisComputer(const QByteArray& folder)
{
    constexpr std::array<unsigned long, 7> disks = {
        EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,
        TMPFS_MAGIC,      OVERLAYFS_SUPER_MAGIC, 0x2FC12FC1UL /* zfs */};
    struct statfs found = {};
    return statfs(folder.constData(), &found) == 0 &&
           std::count(disks.begin(), disks.end(), static_cast<unsigned long>(found.f_type)) > 0;
}
} // namespace

Capture::Capture(const QStringList& paths, const Spool& usedSpool, StoreWorker& usedWorker)
    : spool(usedSpool)
    , worker(usedWorker)
    , kernel(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    for (const QString& path : paths)
        places.push_back({QDir::cleanPath(path)});
    lookAround();
    std::sort(toRead.begin(), toRead.end(),
              [&](const QString& a, const QString& b) { return seen.value(a) > seen.value(b); });
    toRead = toRead.mid(0, mostInFirstLook);
}

void Capture::readEvents()
{
    alignas(inotify_event) std::array<char, 1 << 16> buffer;
    ssize_t size = 0;
    while ((size = read(kernel, buffer.data(), buffer.size())) > 0)
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            const QString name = event->len > 0 ? QFile::decodeName(event->name) : QString();
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if (name.isEmpty()) // too many changes, or the folder was moved, removed, unmounted
                isLookDue = true;
            else if (!name.startsWith('.') && (event->mask & IN_ISDIR) == 0)
                for (const Place& place : places)
                    if (event->wd == place.watch)
                        readLog(place.path + '/' + name);
        }
}

int Capture::work()
{
    for (int i = 0; i < readsBetweenEvents && !toRead.isEmpty(); ++i)
        readLog(toRead.takeFirst());
    if (isLookDue || nextLook.hasExpired())
        lookAround();
    return toRead.isEmpty() ? static_cast<int>(nextLook.remainingTime()) : 0;
}

void Capture::lookAround()
{
    QElapsedTimer duration;
    duration.start();
    qint64 pauseMs = secondMs;
    for (Place& place : places)
        if (!look(place))
            pauseMs = absentMs;
    isLookDue = false;
    for (const QString& link : links.values())
        lookAt(link);
    for (const QString& path : unread.keys())
        if (!unread[path].isNamed || !unread[path].isReadable)
            readLog(path);
    // A look at very many files on a share takes a fifth of the time at most.
    nextLook.setRemainingTime(std::clamp(4 * duration.elapsed(), pauseMs, longestPauseMs));
}

/// Finds another folder at the path, and the changed files where the kernel does not name them.
/// False if there is nothing.
bool Capture::look(Place& place)
{
    constexpr quint32 mask =
        IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_MOVE_SELF | IN_DELETE_SELF | IN_ONLYDIR;
    const QByteArray path = QFile::encodeName(place.path);
    struct stat status = {};
    stat(path.constData(), &status);
    const std::array<quint64, 2> found{status.st_dev, status.st_ino};
    const bool isAnother = found != place.identity;
    if (!isLookDue && !isAnother && place.isTold)
        return true;
    place.identity = found;
    place.watch = inotify_add_watch(kernel, path.constData(), mask);
    place.isTold = place.watch >= 0 && isOfThisComputer(path);
    if (isAnother && S_ISDIR(status.st_mode))
        messages::tell(QString("the folder %1 is watched").arg(place.path));
    else if (isAnother && found == nothing)
        messages::warn(QString("%1 is not there").arg(place.path));
    for (const QString& file : logfiles::filesOf(place.path))
        lookAt(file);
    return found != nothing;
}

void Capture::lookAt(const QString& path)
{
    const qint64 changedAt = changeOf(path);
    if (changedAt == 0 || changedAt == seen.value(path))
        return;
    seen.insert(path, changedAt);
    toRead << path;
}

/// When a file changed in any way, in milliseconds since 1970; 0 without a file. A link is
/// remembered, and stands for its target.
qint64 Capture::changeOf(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) == 0 && S_ISLNK(status.st_mode)) {
        links.insert(path);
        status = {};
        stat(name.constData(), &status);
    }
    constexpr qint64 nsInMs = 1000000;
    const timespec& change = status.st_ctim;
    return S_ISDIR(status.st_mode) ? 0 : change.tv_sec * secondMs + change.tv_nsec / nsInMs;
}

void Capture::readLog(const QString& path)
{
    const qint64 changedAt = changeOf(path);
    const bool isSettled = std::abs(QDateTime::currentMSecsSinceEpoch() - changedAt) >= settledMs;
    if (isSettled && changedAt != 0)
        seen.insert(path, changedAt);
    else
        seen.remove(path);
    QString reason;
    const auto bytes = logfiles::bytesOf(path, reason);
    const bool isLog = bytes && stationlog::read(*bytes, reason);
    const QFileInfo info(path);
    const bool isNothing = logfiles::isGone(path) || (info.isDir() && info.isReadable());
    if (isLog ? keep(*bytes) : isNothing) {
        unread.remove(path);
        return;
    }
    Unread& file = unread[path];
    if (file.changedAt != changedAt) {
        file = {changedAt, bytes.has_value(), false};
        if (isLog)
            worker.wake(true);
    } else if (!isLog && isSettled && !file.isNamed) {
        file.isNamed = true;
        messages::warn(logimport::refusal(path, reason));
    }
}

/// False while the disk of the spool is full.
bool Capture::keep(const QByteArray& log)
{
    try {
        spool.keep(log);
    } catch (const std::runtime_error& error) {
        if (!std::exchange(isFull, true))
            messages::warn(
                QString("%1; until it has room, the folder is read instead").arg(error.what()));
        return false;
    }
    if (std::exchange(isFull, false))
        messages::tell("the spool has room again");
    worker.wake();
    return true;
}
