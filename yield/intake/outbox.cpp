// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/outbox.h"

#include "unit/outboxname.h"

#include <QDir>
#include <QFile>

#include <cerrno>
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

/// Of LOGS, which may be a link. Every member of the group may write to the outbox.
mode_t folderMode(const QString& logs)
{
    constexpr mode_t allRights = 0777;
    constexpr mode_t groupRights = 0770;
    struct stat status = {};
    if (stat(QFile::encodeName(logs).constData(), &status) != 0)
        fail(logs, errno);
    return (status.st_mode & allRights) | groupRights;
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

/// The names of the logs in a folder, sorted; a link is none.
QStringList logsIn(const QString& folder)
{
    std::error_code problem;
    std::error_code ignored;
    QStringList names;
    for (fs::directory_iterator entry(QFile::encodeName(folder).toStdString(), problem);
         entry != fs::directory_iterator(); entry.increment(problem)) {
        const QString name = QFile::decodeName(entry->path().filename().c_str());
        if (!entry->is_symlink(ignored) && entry->is_regular_file(ignored) &&
            OutboxName::read(name))
            names << name;
    }
    if (problem)
        fail(folder, problem.value());
    names.sort();
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
    folderMode(logsFolder);
    return isFolder(folder);
}

void Outbox::make() const
{
    const mode_t mode = folderMode(logsFolder);
    for (const QString& path : {folder, folder + "/Stored", folder + "/Rejected"})
        makeFolder(path, mode);
}

QStringList Outbox::pending() const
{
    return logsIn(folder);
}

QString Outbox::storedPath(const QString& name) const
{
    constexpr int monthSize = 7; // yyyy-MM
    const QString month = OutboxName::read(name)->startedAt().left(monthSize);
    return folder + "/Stored/" + month + '/' + name;
}

bool Outbox::hasStored(const QString& name) const
{
    return name.isEmpty() ? !QDir(folder + "/Stored").isEmpty() : isThere(storedPath(name));
}

void Outbox::moveToStored(const QString& name) const
{
    const QString target = storedPath(name);
    makeFolder(target.chopped(name.size() + 1), folderMode(logsFolder));
    moveFile(pathOf(name), target);
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

QStringList Outbox::rejected() const
{
    QStringList lines;
    for (const QString& name : logsIn(folder + "/Rejected")) {
        QFile reason(folder + "/Rejected/" + name + reasonEnding);
        reason.open(QIODevice::ReadOnly);
        lines << name + ": " + QString::fromUtf8(reason.readAll()).trimmed();
    }
    return lines;
}
