// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/spool.h"

#include "yield/logs/logfiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// Below a folder of the version, so that every later program knows how to read what waits.
const QString versionFolder = "/v1/";
const QString lockFile = "/lock";
const QString logsFolder = "/logs/";
const QString asideFolder = "/aside/";
const QString aboutFile = "/about.json";
const QString reasonEnding = ".reason";

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(("the spool " + text).toStdString());
}

/// To be called before anything else sets errno.
void check(bool isDone, const QString& path)
{
    if (!isDone)
        fail(path + ": " + QString::fromLocal8Bit(std::strerror(errno)));
}

QString hashOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

void flushFolder(const QString& path)
{
    const int folder = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    check(folder >= 0, path);
    const bool isFlushed = fsync(folder) == 0;
    close(folder);
    check(isFlushed, path);
}

void moveFlushed(const QString& from, const QString& to)
{
    check(rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0, to);
    flushFolder(QFileInfo(to).path());
}

/// On the disk, under its name and whole, or not at all.
void writeFlushed(const QString& path, const QByteArray& bytes)
{
    // One name for all that is unfinished: a kill leaves one file, and the next log overwrites it.
    QFile file(QFileInfo(path).path() + "/.unfinished");
    check(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
              file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
              file.write(bytes) == bytes.size() && fsync(file.handle()) == 0,
          path);
    moveFlushed(file.fileName(), path);
}
} // namespace

Spool Spool::locked(const QString& root, const QString& database, const Station& station)
{
    const QByteArray about = QJsonDocument(QJsonObject{{"database", database},
                                                       {"station", station.name},
                                                       {"tests_18", station.tests18}})
                                 .toJson();
    const QString path = root + versionFolder + hashOf(about);
    QDir().mkpath(QFileInfo(QDir(root).absolutePath()).path());
    for (const QString& folder :
         {root, root + versionFolder, path, path + logsFolder, path + asideFolder}) {
        const bool isMade = mkdir(QFile::encodeName(folder).constData(), 0700) == 0;
        check(isMade || errno == EEXIST, folder);
        if (isMade)
            flushFolder(folder + "/..");
    }
    // Open until the end of the process. For writing, as a lock on a share's file needs it.
    const int lock =
        open(QFile::encodeName(root + lockFile).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    check(lock >= 0, root + lockFile);
    const bool isLocked = flock(lock, LOCK_EX | LOCK_NB) == 0;
    if (!isLocked && errno == EWOULDBLOCK)
        fail(root + " is in use by another watch; give --spool another folder");
    check(isLocked, root + lockFile);
    for (const Spool& other : below(root))
        if (other.database != database && !other.waiting().isEmpty())
            fail(QString("%1 is that of the database %2, for which logs wait; give --spool another "
                         "folder")
                     .arg(root, other.database));
    if (!QFile::exists(path + aboutFile))
        writeFlushed(path + aboutFile, about);
    return {path, database, station};
}

std::vector<Spool> Spool::below(const QString& root)
{
    std::vector<Spool> spools;
    const QDir all(root + versionFolder);
    for (const QFileInfo& folder : {QFileInfo(root), QFileInfo(all.path())})
        if (folder.exists() && !folder.isReadable())
            fail(root + " cannot be read");
    for (const QString& name : all.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        QFile about(all.filePath(name) + aboutFile);
        if (!about.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject said = QJsonDocument::fromJson(about.readAll()).object();
        spools.push_back({all.filePath(name),
                          said["database"].toString(),
                          {said["station"].toString(), said["tests_18"].toBool()}});
    }
    return spools;
}

void Spool::keep(const QByteArray& log) const
{
    const QString name = hashOf(log);
    if (!QFile::exists(path + logsFolder + name) && !QFile::exists(path + asideFolder + name))
        writeFlushed(path + logsFolder + name, log);
}

QStringList Spool::waiting() const
{
    return logfiles::filesOf(path + logsFolder);
}

QString Spool::moveAside(const QString& waitingPath, const QString& reason) const
{
    const QString aside = path + asideFolder + QFileInfo(waitingPath).fileName();
    try {
        writeFlushed(aside + reasonEnding, reason.toUtf8());
        moveFlushed(waitingPath, aside);
    } catch (const std::runtime_error& error) {
        return QString("a log cannot be stored (%1) nor set aside: %2").arg(reason, error.what());
    }
    return QString("a log cannot be stored and was set aside as %1: %2").arg(aside, reason);
}

QStringList Spool::setAside() const
{
    QStringList lines;
    for (const QString& log : logfiles::filesOf(path + asideFolder)) {
        QFile reason(log + reasonEnding);
        if (reason.open(QIODevice::ReadOnly))
            lines << log + ": " + QString::fromUtf8(reason.readAll());
    }
    return lines;
}
