// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/filereplacement.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
/// A name that no log has and nobody gives to a copy.
const QString growingPrefix = QStringLiteral(".zorvi_log_in_the_making_");

/// Whether every byte reached the disk: a full one says so only when what is buffered is written
/// out, and one that loses its power, or lies across a network, only when it is asked to sync.
bool writeOut(QFile& file, const QByteArray& bytes)
{
    bool whole = file.write(bytes) == bytes.size() && file.flush();
#if defined(_POSIX_SYNCHRONIZED_IO) && _POSIX_SYNCHRONIZED_IO > 0
    whole = whole && fdatasync(file.handle()) == 0;
#endif
    return whole;
}

/// Renames over what stands there, in one step; QFile::rename refuses to.
bool moveOver(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(from).toStdString(),
                            QFile::encodeName(to).toStdString(), error);
    return !error;
}
} // namespace

bool filereplacement::write(const QString& path, const QByteArray& bytes)
{
    // A file name ends at a NUL: somebody else's file would be written.
    if (path.contains(QChar::Null))
        return false;
    const QFileInfo old(path);
    QFile growing(old.path() + QLatin1Char('/') + growingPrefix +
                  QUuid::createUuid().toString(QUuid::Id128));
    const bool replaceable = !old.isSymLink() && (!old.exists() || old.isFile());
    if (!replaceable || !growing.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        QFile inPlace(path);
        return inPlace.open(QIODevice::WriteOnly) && writeOut(inPlace, bytes);
    }
    if (old.exists())
        growing.setPermissions(old.permissions());
    const bool mayReplace = !old.exists() || old.isWritable();
    const bool whole = mayReplace && writeOut(growing, bytes);
    // Closed first: a file that cannot be written out refuses to be removed while it is open.
    growing.close();
    if (whole && moveOver(growing.fileName(), path))
        return true;
    QFile::remove(growing.fileName());
    return false;
}

void filereplacement::removeLeftovers(const QString& folder)
{
    constexpr int longestWriteSeconds = 60;
    const QDateTime stillWriting = QDateTime::currentDateTime().addSecs(-longestWriteSeconds);
    QDirIterator files(folder, {growingPrefix + QLatin1Char('*')}, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        const QString path = files.next();
        if (files.fileInfo().lastModified() < stillWriting)
            QFile::remove(path);
    }
}
