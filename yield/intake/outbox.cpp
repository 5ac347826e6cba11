// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/outbox.h"

#include "unit/outboxname.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace
{
namespace fs = std::filesystem;

const QString reasonEnding = ".reason";

[[noreturn]] void fail(const QString& path, int error)
{
    throw OutboxError(path + ": " + QString::fromLocal8Bit(std::strerror(error)));
}

fs::path nativePath(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

/// False without anything of that name; a link is not followed.
bool isThere(const QString& path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0;
}

/// False if it is missing. Throws if there is anything else, also a link: who may write to LOGS
/// could plant one that leads anywhere.
bool isFolder(const QString& path)
{
    struct stat status = {};
    if (lstat(QFile::encodeName(path).constData(), &status) != 0) {
        if (errno != ENOENT)
            fail(path, errno);
        return false;
    }
    if (!S_ISDIR(status.st_mode))
        throw OutboxError(path + " is not a folder");
    return true;
}

void makeFolder(const QString& path, mode_t mode)
{
    if (isFolder(path))
        return;
    const mode_t mask = umask(0); // it would close the folder to the group
    const bool isMade = mkdir(QFile::encodeName(path).constData(), mode) == 0;
    const int error = errno;
    umask(mask);
    if (!isMade && error != EEXIST)
        fail(path, error);
}

struct stat statusOf(const QString& path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        fail(path, errno);
    return status;
}

/// Every member of the group may write; others as in LOGS.
mode_t folderMode(const QString& logs)
{
    constexpr mode_t rightsOfAll = 0777;
    constexpr mode_t rightsOfGroup = 0770;
    return (statusOf(logs).st_mode & rightsOfAll) | rightsOfGroup;
}

Outbox::FolderId idOf(const QString& path)
{
    const struct stat status = statusOf(path);
    return {status.st_dev, status.st_ino};
}

/// Never overwrites a file. Nothing happens where there is no file any more.
void moveFile(const QString& from, const QString& to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    int error = 0;
    if (renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) !=
        0)
        error = errno;
    if (error == EINVAL || error == ENOSYS) { // not known to the file system of some shares
        error = isThere(to) ? EEXIST : 0;
        if (error == 0 && rename(source.constData(), target.constData()) != 0)
            error = errno;
    }
    if (error != 0 && isThere(from))
        fail(to, error);
}

/// The names of the files in a folder, in no order; links are left out.
QStringList filesIn(const QString& folder)
{
    std::error_code problem;
    QStringList names;
    for (fs::directory_iterator entry(nativePath(folder), problem);
         entry != fs::directory_iterator(); entry.increment(problem))
        if (std::error_code ignored; !entry->is_symlink(ignored) && entry->is_regular_file(ignored))
            names << QFile::decodeName(entry->path().filename().c_str());
    if (problem)
        fail(folder, problem.value());
    return names;
}
} // namespace

Outbox::Outbox(const QString& logs)
    : logsFolder(logs)
    , folder(logs + "/Outbox")
{
}

bool Outbox::exists() const
{
    return isFolder(folder);
}

Outbox::FolderId Outbox::logsId() const
{
    return idOf(logsFolder);
}

Outbox::FolderId Outbox::id() const
{
    return idOf(folder);
}

qint64 Outbox::changedAt() const
{
    constexpr qint64 nsPerSecond = 1000000000;
    const timespec time = statusOf(folder).st_mtim;
    return time.tv_sec * nsPerSecond + time.tv_nsec;
}

void Outbox::make() const
{
    const mode_t mode = folderMode(logsFolder);
    for (const QString& path : {folder, folder + "/Stored", folder + "/Rejected"})
        makeFolder(path, mode);
}

QStringList Outbox::pending() const
{
    QStringList names;
    for (const QString& name : filesIn(folder))
        if (OutboxName::read(name))
            names << name;
    names.sort();
    return names;
}

QString Outbox::monthFolder(const QString& name) const
{
    constexpr int monthSize = 7; // yyyy-MM
    return folder + "/Stored/" + OutboxName::read(name)->startedAt().left(monthSize);
}

void Outbox::moveToStored(const QString& name) const
{
    const QString month = monthFolder(name);
    makeFolder(month, folderMode(logsFolder));
    moveFile(pathOf(name), month + '/' + name);
}

bool Outbox::isStored(const QString& name) const
{
    return isThere(monthFolder(name) + '/' + name);
}

bool Outbox::hasStored() const
{
    std::error_code problem;
    const fs::directory_iterator entry(nativePath(folder + "/Stored"), problem);
    if (problem)
        fail(folder + "/Stored", problem.value());
    return entry != fs::directory_iterator();
}

bool Outbox::reject(const QString& name, const QString& reason) const
{
    if (!isThere(pathOf(name)))
        return false;
    const QString target = folder + "/Rejected/" + name;
    QFile file(target + reasonEnding);
    // One that is there already was left by a kill.
    if (file.open(QIODevice::NewOnly) &&
        (file.write(reason.toUtf8() + '\n') < 0 || !file.flush())) {
        file.remove();
        throw OutboxError(file.fileName() + ": " + file.errorString());
    }
    moveFile(pathOf(name), target);
    return true;
}

std::vector<RejectedLog> Outbox::rejected() const
{
    QStringList names = filesIn(folder + "/Rejected");
    names.sort();
    std::vector<RejectedLog> logs;
    for (const QString& name : qAsConst(names)) {
        if (!OutboxName::read(name))
            continue;
        QFile reason(folder + "/Rejected/" + name + reasonEnding);
        const bool isOpen = reason.open(QIODevice::ReadOnly);
        logs.push_back(
            {name, isOpen ? QString::fromUtf8(reason.readAll()).trimmed() : "no reason given"});
    }
    return logs;
}
