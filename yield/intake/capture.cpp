// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/capture.h"

#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/intake/storeworker.h"
#include "yield/logs/logfiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
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
constexpr qint64 longestTickMs = 30000;
/// A file that has not changed for so long is as its writer wants it.
constexpr qint64 settledMs = 2000;
constexpr qint64 nsInMs = 1000000;
constexpr std::array<qint64, 3> noFile{};
/// The worker reads all logs at the start; so many are safe even if the database is away.
constexpr int mostInFirstLook = 200;
/// Logs that are read between two looks at the kernel's events.
constexpr int readsBetweenEvents = 16;

/// Whether the kernel names every change. Anywhere else another computer may write, so what is not
/// known is taken for a share.
bool isOfThisComputer(const QByteArray& folder)
{
    constexpr std::array<unsigned long, 11> disks = {
        EXT4_SUPER_MAGIC,         XFS_SUPER_MAGIC,   BTRFS_SUPER_MAGIC,
        F2FS_SUPER_MAGIC,         TMPFS_MAGIC,       RAMFS_MAGIC,
        OVERLAYFS_SUPER_MAGIC,    MSDOS_SUPER_MAGIC, EXFAT_SUPER_MAGIC,
        0x7366746EUL /* ntfs3 */, 0x2FC12FC1UL /* zfs */};
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
    tick();
    std::sort(toRead.begin(), toRead.end(),
              [&](const QString& a, const QString& b) { return seen.value(a) > seen.value(b); });
    toRead = toRead.mid(0, mostInFirstLook);
    sinceTick.start();
}

Capture::~Capture()
{
    close(kernel);
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
            isLookDue = isLookDue || (event->mask & IN_Q_OVERFLOW) != 0;
            for (const Place& place : places) {
                if (event->wd != place.watch)
                    continue;
                if (name.isEmpty()) // the folder itself was moved, removed or unmounted
                    isLookDue = true;
                else if (!name.startsWith('.') && (event->mask & IN_ISDIR) == 0)
                    readLog(place.path + '/' + name);
            }
        }
}

int Capture::work()
{
    for (int i = 0; i < readsBetweenEvents && !toRead.isEmpty(); ++i)
        readLog(toRead.takeFirst());
    if (isLookDue || sinceTick.hasExpired(tickMs)) {
        sinceTick.start();
        tick();
        const bool isAllThere = std::all_of(places.begin(), places.end(),
                                            [](const Place& place) { return place.isThere; });
        // A look at very many files on a share takes at most a quarter of the time.
        tickMs =
            std::clamp(4 * sinceTick.elapsed(), isAllThere ? secondMs : absentMs, longestTickMs);
    }
    return toRead.isEmpty() ? static_cast<int>(std::max<qint64>(0, tickMs - sinceTick.elapsed()))
                            : 0;
}

void Capture::tick()
{
    for (Place& place : places)
        look(place);
    isLookDue = false;
    for (const QString& link : links.values())
        lookAt(link);
    for (const QString& path : unread.keys())
        if (!unread[path].isNamed || !unread[path].isReadable)
            readLog(path);
}

/// Finds another folder at the path, and the changed files where the kernel does not name them.
void Capture::look(Place& place)
{
    constexpr quint32 mask =
        IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_MOVE_SELF | IN_DELETE_SELF | IN_ONLYDIR;
    const QByteArray path = QFile::encodeName(place.path);
    struct stat status = {};
    const bool isThere = stat(path.constData(), &status) == 0;
    decltype(place.identity) identity{};
    if (S_ISDIR(status.st_mode))
        identity = {status.st_dev, status.st_ino};
    const bool isAnother = identity != place.identity;
    if (!isLookDue && !isAnother && place.isTold)
        return;
    if (isAnother && place.watch >= 0)
        inotify_rm_watch(kernel, place.watch);
    place.watch = inotify_add_watch(kernel, path.constData(), mask);
    place.isTold = place.watch >= 0 && isOfThisComputer(path);
    if (isAnother && S_ISDIR(status.st_mode))
        messages::tell(QString("the folder %1 is watched").arg(place.path));
    else if (place.isThere && !isThere)
        messages::warn(QString("%1 is not there").arg(place.path));
    place.identity = identity;
    place.isThere = isThere;
    for (const QString& file : logfiles::filesOf(place.path))
        lookAt(file);
}

void Capture::lookAt(const QString& path)
{
    const Stamp stamp = stampOf(path);
    if (stamp == noFile || seen.value(path) == stamp)
        return;
    seen.insert(path, stamp);
    toRead << path;
}

/// Of the file that a link points to; the link is remembered.
Capture::Stamp Capture::stampOf(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) == 0 && S_ISLNK(status.st_mode)) {
        links.insert(path);
        status = {};
        stat(name.constData(), &status);
    }
    if (status.st_ino == 0 || S_ISDIR(status.st_mode))
        return {};
    return {status.st_ctim.tv_sec * secondMs * nsInMs + status.st_ctim.tv_nsec, status.st_size,
            static_cast<qint64>(status.st_ino)};
}

void Capture::readLog(const QString& path)
{
    const Stamp stamp = stampOf(path);
    // Two changes within one tick of the file system's clock look the same.
    const qint64 ageMs = QDateTime::currentMSecsSinceEpoch() - stamp[0] / nsInMs;
    if (stamp == noFile || std::abs(ageMs) < settledMs)
        seen.remove(path);
    else
        seen.insert(path, stamp);
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
    if (file.stamp != stamp || !file.age.isValid()) {
        file = {stamp, bytes.has_value(), false, {}};
        file.age.start();
        if (isLog)
            worker.wake(true);
    } else if (!isLog && !file.isNamed && file.age.hasExpired(settledMs)) {
        messages::warn(logimport::refusal(path, reason));
        file.isNamed = true;
    }
}

/// False while the disk of the spool is full.
bool Capture::keep(const QByteArray& log)
{
    try {
        spool.keep(log);
    } catch (const SpoolError& error) {
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
