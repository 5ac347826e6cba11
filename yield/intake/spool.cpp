// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/spool.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// Below a folder of the version, so that every later program knows how to read what waits.
const QString versionFolder = "/v1/";
const QString logsFolder = "/logs/";
const QString asideFolder = "/aside/";
const QString aboutFile = "/about.json";
const QString lastLookFile = "/last-look";
const QString reasonEnding = ".reason";

[[noreturn]] void fail(const QString& path)
{
    throw SpoolError(
        QString("the spool %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
}

QByteArray hashOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

void flushFolder(const QString& path)
{
    const int folder = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool isFlushed = folder >= 0 && fsync(folder) == 0;
    if (folder >= 0)
        close(folder);
    if (!isFlushed)
        fail(path);
}

void makeFolder(const QString& path)
{
    if (mkdir(QFile::encodeName(path).constData(), 0700) == 0)
        flushFolder(QFileInfo(path).path());
    else if (errno != EEXIST)
        fail(path);
}

/// On the disk, under its name and whole, or not at all.
void writeFlushed(const QString& folder, const QString& name, const QByteArray& bytes)
{
    // One name for all that is unfinished: a kill leaves one file, and the next log overwrites it.
    const QByteArray unfinished = QFile::encodeName(folder + ".unfinished");
    const int file = open(unfinished.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0)
        fail(folder);
    const auto size = static_cast<std::size_t>(bytes.size());
    const auto written = write(file, bytes.constData(), size);
    if (written >= 0 && written < bytes.size())
        errno = ENOSPC;
    const bool isWhole = written == bytes.size() && fsync(file) == 0;
    const int error = errno;
    close(file);
    errno = error;
    if (!isWhole ||
        rename(unfinished.constData(), QFile::encodeName(folder + name).constData()) != 0)
        fail(folder);
    flushFolder(folder);
}

QStringList pathsIn(const QString& folder)
{
    QStringList paths;
    for (const QString& name : QDir(folder).entryList(QDir::Files, QDir::Name))
        if (!name.endsWith(reasonEnding))
            paths << folder + name;
    return paths;
}

/// A folder whose about file cannot be read is none.
std::vector<SpoolFolder> folderAt(const QString& path)
{
    QFile about(path + aboutFile);
    if (!about.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject said = QJsonDocument::fromJson(about.readAll()).object();
    const Station station = {said["station"].toString(), said["tests_18"].toBool()};
    return {{path, said["database"].toString(), station}};
}
} // namespace

QStringList SpoolFolder::waiting() const
{
    return pathsIn(path + logsFolder);
}

QStringList SpoolFolder::setAside() const
{
    return pathsIn(path + asideFolder);
}

QString SpoolFolder::reasonFor(const QString& asidePath)
{
    QFile file(asidePath + reasonEnding);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

void SpoolFolder::remove(const QString& path)
{
    unlink(QFile::encodeName(path).constData()); // a log that comes back after a crash is known
}

QString SpoolFolder::moveAside(const QString& waitingPath, const QString& reason) const
{
    const QString aside = path + asideFolder + QFileInfo(waitingPath).fileName();
    try {
        writeFlushed(path + asideFolder, QFileInfo(aside).fileName() + reasonEnding,
                     reason.toUtf8() + '\n');
        if (rename(QFile::encodeName(waitingPath).constData(),
                   QFile::encodeName(aside).constData()) != 0)
            fail(waitingPath);
        flushFolder(path + asideFolder);
    } catch (const SpoolError& error) {
        return QString("a log cannot be stored (%1) nor set aside: %2").arg(reason, error.text());
    }
    return QString("a log cannot be stored and was set aside as %1: %2").arg(aside, reason);
}

std::vector<SpoolFolder> SpoolFolder::below(const QString& root)
{
    std::vector<SpoolFolder> folders;
    const QDir all(root + versionFolder);
    for (const QString& name : all.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        for (const SpoolFolder& folder : folderAt(all.filePath(name)))
            folders.push_back(folder);
    return folders;
}

QString SpoolFolder::defaultRoot()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/spool";
}

Spool::Spool(const QString& root, const QString& database, const Station& station)
    : place{{}, database, station}
{
    const QByteArray about = QJsonDocument(QJsonObject{{"database", place.database},
                                                       {"station", station.name},
                                                       {"tests_18", station.tests18}})
                                 .toJson();
    place.path = root + versionFolder + QString::fromLatin1(hashOf(about));
    QDir().mkpath(QFileInfo(QDir(root).absolutePath()).path());
    for (const QString& path : {root, root + versionFolder, place.path, place.path + logsFolder,
                                place.path + asideFolder})
        makeFolder(path);
    if (!QFile::exists(place.path + aboutFile))
        writeFlushed(place.path + QLatin1Char('/'), aboutFile, about);
    lock = open(QFile::encodeName(place.path + aboutFile).constData(), O_RDONLY | O_CLOEXEC);
    if (lock < 0 || flock(lock, LOCK_EX | LOCK_NB) != 0)
        fail(place.path + (errno == EWOULDBLOCK ? " is in use by another watch" : ""));
    for (const SpoolFolder& there : folderAt(place.path))
        if (there.database == database && there.station.name == station.name)
            return;
    throw SpoolError(QString("the spool %1 is another database's or station's").arg(place.path));
}

Spool::~Spool()
{
    close(lock);
}

void Spool::keep(const QByteArray& log)
{
    const QString name = QString::fromLatin1(hashOf(log));
    if (!QFile::exists(place.path + logsFolder + name) &&
        !QFile::exists(place.path + asideFolder + name))
        writeFlushed(place.path + logsFolder, name, log);
}

QDateTime Spool::lastLook() const
{
    const QFileInfo note(place.path + lastLookFile);
    return note.exists() ? note.lastModified() : QDateTime::fromMSecsSinceEpoch(0);
}

void Spool::noteLook()
{
    QFile file(place.path + lastLookFile);
    if (file.open(QIODevice::WriteOnly))
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
}
