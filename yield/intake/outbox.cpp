// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/outbox.h"

#include "unit/outboxname.h"

#include <QDir>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>

namespace
{
[[noreturn]] void fail(const QString& path, const QString& reason)
{
    throw std::runtime_error((path + ": " + reason).toStdString());
}

/// A link is not followed.
bool isThere(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// Returns false if the target exists. Nothing happens where there is no file any more. Names are
/// never used again, so that no other program makes the target meanwhile.
bool moveFile(const QString& from, const QString& to)
{
    if (isThere(to))
        return !isThere(from);
    std::error_code problem;
    std::filesystem::rename(QFile::encodeName(from).toStdString(),
                            QFile::encodeName(to).toStdString(), problem);
    if (problem && isThere(from))
        fail(to, QString::fromStdString(problem.message()));
    return true;
}

} // namespace

Outbox::Outbox(const QString& logs)
    : logsFolder(logs)
    , folder(logs + "/Outbox")
{
}

/// Throws if there is anything else, also a link: who may write to LOGS could plant one that leads
/// anywhere.
bool Outbox::exists(const QString& subfolder) const
{
    const QFileInfo info(folder + subfolder);
    if (info.isSymLink() || (info.exists() && !info.isDir()))
        fail(info.filePath(), "it is not a folder");
    return info.exists();
}

void Outbox::make(const QString& subfolder) const
{
    if (exists(subfolder))
        return;
    struct stat logs = {};
    if (stat(QFile::encodeName(logsFolder).constData(), &logs) != 0)
        fail(logsFolder, qt_error_string(errno));
    const mode_t mask = umask(0); // it would close the folder to the group
    const int result = mkdir(QFile::encodeName(folder + subfolder).constData(),
                             (logs.st_mode & ACCESSPERMS) | S_IRWXU | S_IRWXG);
    const int error = errno;
    umask(mask);
    if (result != 0 && error != EEXIST) // made by another collector
        fail(folder + subfolder, qt_error_string(error));
}

QStringList Outbox::logs(const QString& subfolder) const
{
    const QDir dir(folder + subfolder);
    if (!dir.isReadable())
        fail(dir.path(), "it cannot be read");
    QStringList logs;
    for (const QString& name : dir.entryList(QDir::Files | QDir::NoSymLinks, QDir::Name))
        if (OutboxName::read(name))
            logs << dir.filePath(name);
    return logs;
}

bool Outbox::moveToStored(const QString& log) const
{
    const QString name = QFileInfo(log).fileName();
    const QString day = OutboxName::read(name)->startedAt();
    const QString month = "/Stored/" + day.section('-', 0, 1);
    make(month);
    return moveFile(log, folder + month + '/' + name);
}

bool Outbox::reject(const QString& log, const QString& reason) const
{
    if (!isThere(log))
        return false;
    const QString target = folder + "/Rejected/" + QFileInfo(log).fileName();
    QFile file(target + ".reason");
    // One that is there already was left by a kill.
    if (file.open(QIODevice::NewOnly) &&
        (file.write(reason.toUtf8() + '\n') < 0 || !file.flush())) {
        file.remove();
        fail(file.fileName(), file.errorString());
    }
    if (!moveFile(log, target))
        fail(target, "exists already");
    return true;
}
