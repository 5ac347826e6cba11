// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/capture.h"

#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/intake/spool.h"
#include "yield/intake/storeworker.h"
#include "yield/logs/logfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace
{
constexpr qint64 secondMs = 1000;
constexpr qint64 longestTickMs = 30000;
constexpr qint64 noteMs = 60000;
/// A file that has not changed for so long is as its writer wants it.
constexpr qint64 settledMs = 2000;
constexpr qint64 nsInMs = 1000000;
constexpr std::size_t mostInFirstLook = 1000;
constexpr std::array<qint64, 3> noFile{};
/// Logs that are read between two looks at the kernel's events.
constexpr int readsBetweenEvents = 16;

/// Whether the kernel names every change. Anywhere else another computer may write, so what is not
/// known is taken for a share.
bool isOfThisComputer(const QString& folder)
{
    constexpr std::array<unsigned long, 11> disks = {
        EXT4_SUPER_MAGIC,         XFS_SUPER_MAGIC,   BTRFS_SUPER_MAGIC,
        F2FS_SUPER_MAGIC,         TMPFS_MAGIC,       RAMFS_MAGIC,
        OVERLAYFS_SUPER_MAGIC,    MSDOS_SUPER_MAGIC, EXFAT_SUPER_MAGIC,
        0x7366746EUL /* ntfs3 */, 0x2FC12FC1UL /* zfs */};
    struct statfs found = {};
    return statfs(QFile::encodeName(folder).constData(), &found) == 0 &&
           std::find(disks.begin(), disks.end(), static_cast<unsigned long>(found.f_type)) !=
               disks.end();
}

/// Zeros if there is nothing.
struct stat statusOf(const QString& path)
{
    struct stat status = {};
    stat(QFile::encodeName(path).constData(), &status);
    return status;
}
} // namespace

Capture::Capture(const QStringList& paths, Spool& usedSpool, StoreWorker& usedWorker)
    : spool(usedSpool)
    , worker(usedWorker)
    , kernel(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    for (const QString& path : paths)
        addPlace(QDir::cleanPath(path));
    lookAtAll();
    const qint64 since = (spool.lastLook().toMSecsSinceEpoch() - settledMs) * nsInMs;
    const auto isOld = [&](const QString& path) { return seen.value(path)[0] < since; };
    toRead.erase(std::remove_if(toRead.begin(), toRead.end(), isOld), toRead.end());
    std::sort(toRead.begin(), toRead.end(), [&](const QString& a, const QString& b) {
        return seen.value(a)[0] > seen.value(b)[0];
    });
    toRead.resize(std::min(toRead.size(), mostInFirstLook));
    sinceTick.start();
    sinceNote.start();
}

Capture::~Capture()
{
    if (isDone())
        spool.noteLook();
    close(kernel);
}

void Capture::readEvents()
{
    alignas(inotify_event) std::array<char, 1 << 16> buffer;
    ssize_t size = 0;
    while ((size = read(kernel, buffer.data(), buffer.size())) > 0)
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            handle(*event, event->len > 0 ? QFile::decodeName(event->name) : QString());
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
}

void Capture::handle(const inotify_event& event, const QString& name)
{
    constexpr quint32 lost = IN_MOVE_SELF | IN_DELETE_SELF | IN_UNMOUNT | IN_IGNORED;
    if ((event.mask & IN_Q_OVERFLOW) != 0)
        return lookAtAll();
    for (std::size_t i = 0; i < places.size(); ++i) {
        Place& place = places[i];
        const QString path = place.folder + '/' + name;
        if (event.wd != place.watch)
            continue;
        if ((event.mask & (lost | IN_ISDIR)) != 0) {
            checkPlace(place, (event.mask & lost) != 0);
        } else if ((place.file.isEmpty() ? !name.startsWith('.') : name == place.file) &&
                   ((event.mask & IN_ATTRIB) == 0 || unread.contains(path))) {
            addTarget(path);
            readLog(path);
        }
    }
}

void Capture::addPlace(const QString& path)
{
    places.emplace_back();
    places.back().path = path;
    watchPlace(places.back());
}

/// The file that a link points to is watched where it lies.
void Capture::addTarget(const QString& link)
{
    const QFileInfo info(link);
    const QString target = info.symLinkTarget();
    const auto isTarget = [&](const Place& place) { return place.path == target; };
    if (target.isEmpty() || info.isDir() || std::any_of(places.begin(), places.end(), isTarget))
        return;
    addPlace(target);
    addTarget(target);
}

/// For a path that is no folder, the folder around it is watched: the path may become one.
void Capture::watchPlace(Place& place)
{
    constexpr quint32 mask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_ATTRIB | IN_MOVE_SELF |
                             IN_DELETE_SELF | IN_ONLYDIR;
    const QFileInfo info(place.path);
    const int before = place.watch;
    place.folder = info.isDir() ? place.path : info.path();
    place.file = info.isDir() ? QString() : info.fileName();
    const struct stat status = statusOf(place.folder);
    place.identity = {status.st_dev, status.st_ino};
    place.watch = inotify_add_watch(kernel, QFile::encodeName(place.folder).constData(), mask);
    place.isShared = place.watch < 0 || !isOfThisComputer(place.folder);
    if (before >= 0 && std::none_of(places.begin(), places.end(),
                                    [=](const Place& other) { return other.watch == before; }))
        inotify_rm_watch(kernel, before);
}

/// Looks for a folder that was moved, removed, unmounted or replaced.
void Capture::checkPlace(Place& place, bool isLost)
{
    const struct stat status = statusOf(place.folder);
    const bool wasFolder = place.file.isEmpty();
    if (!isLost && QFileInfo(place.path).isDir() == wasFolder &&
        place.identity == std::array<quint64, 2>{status.st_dev, status.st_ino})
        return;
    watchPlace(place);
    if (place.file.isEmpty())
        messages::tell(QString("the folder %1 is %2")
                           .arg(place.path, wasFolder ? "another one now" : "there"));
    else if (wasFolder)
        messages::warn(QString("the folder %1 is gone").arg(place.path));
    lookAt(place);
}

Capture::Stamp Capture::stampOf(const QString& path)
{
    const struct stat status = statusOf(path);
    if (S_ISDIR(status.st_mode))
        return {};
    return {status.st_ctim.tv_sec * secondMs * nsInMs + status.st_ctim.tv_nsec, status.st_size,
            static_cast<qint64>(status.st_ino)};
}

QStringList Capture::changedIn(const Place& place)
{
    QStringList changed;
    const auto look = [&](const QString& path) {
        const Stamp stamp = stampOf(path);
        if (stamp == noFile || seen.value(path) == stamp)
            return;
        seen.insert(path, stamp);
        changed << path;
    };
    if (!place.file.isEmpty()) {
        addTarget(place.path);
        look(place.path);
        return changed;
    }
    std::error_code problem; // a folder that cannot be read is looked at again
    const std::filesystem::path folder(QFile::encodeName(place.folder).toStdString());
    for (std::filesystem::directory_iterator entry(folder, problem);
         entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
        const QString name = QFile::decodeName(entry->path().filename().c_str());
        if (name.startsWith('.'))
            continue;
        if (entry->is_symlink(problem))
            addTarget(place.folder + '/' + name);
        look(place.folder + '/' + name);
    }
    return changed;
}

void Capture::lookAt(const Place& place)
{
    for (const QString& path : changedIn(place))
        toRead.push_back(path);
}

void Capture::lookAtAll()
{
    for (std::size_t i = 0; i < places.size(); ++i)
        lookAt(places[i]);
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
    const QFileInfo info(path);
    if (!bytes || !stationlog::read(*bytes, reason)) {
        if (logfiles::isGone(path) || (info.isDir() && info.isReadable())) {
            unread.remove(path);
            return;
        }
        Unread& file = unread[path];
        if (file.stamp != stamp || !file.age.isValid()) {
            file = {stamp, reason, bytes.has_value(), false, {}};
            file.age.start();
        }
        return;
    }
    unread.remove(path);
    try {
        spool.keep(*bytes);
        worker.wake(false);
    } catch (const SpoolError& error) {
        if (unkept.isEmpty())
            messages::warn(
                QString("%1; until it has room, the folder is read instead").arg(error.text()));
        unkept = *bytes;
        seen.remove(path);
        worker.wake(true);
    }
}

void Capture::tryAgain()
{
    for (const QString& path : unread.keys()) {
        if (!unread[path].isReadable || stampOf(path) != unread[path].stamp)
            readLog(path);
        const auto file = unread.find(path);
        if (file == unread.end() || file->isNamed || !file->age.hasExpired(settledMs))
            continue;
        messages::warn(logimport::refusal(path, file->reason));
        file->isNamed = true;
    }
}

void Capture::tick()
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        checkPlace(places[i], false);
        if (places[i].isShared) {
            watchPlace(places[i]);
            lookAt(places[i]);
        }
    }
    tryAgain();
    if (!unkept.isEmpty()) {
        try {
            spool.keep(unkept);
            unkept.clear();
            messages::tell("the spool has room again");
            lookAtAll();
        } catch (const SpoolError&) { // still full
        }
    }
    if (sinceNote.hasExpired(noteMs) && isDone()) {
        spool.noteLook();
        sinceNote.start();
    }
}

int Capture::work()
{
    for (int i = 0; i < readsBetweenEvents && !toRead.empty(); ++i) {
        const QString path = toRead.front();
        toRead.pop_front();
        readLog(path);
    }
    if (sinceTick.hasExpired(tickMs)) {
        sinceTick.start();
        tick();
        // A look at very many files on a share takes at most a quarter of the time.
        tickMs = std::clamp(4 * sinceTick.elapsed(), secondMs, longestTickMs);
    }
    const qint64 restMs = std::max<qint64>(0, tickMs - sinceTick.elapsed());
    return toRead.empty() ? static_cast<int>(restMs) : 0;
}
