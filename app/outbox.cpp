// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/outbox.h"

#include "app/testlog.h"

#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace
{
bool isFolder(const QFileInfo& path)
{
    return path.isDir() && !path.isSymLink();
}

/// Without a date format: that would write the digits of the user's language.
QString newRun(const QDateTime& firstBandAt)
{
    const QString started = firstBandAt.toString(Qt::ISODateWithMs).remove('-').remove(':');
    const quint64 random = QRandomGenerator::system()->generate64();
    return QString("%1-%2").arg(started).arg(random, 16, 16, QLatin1Char('0'));
}

/// Flushes the names in a folder. Some network file systems cannot, and answer EINVAL.
bool flushFolder(const QString& folder)
{
    const int folderFd = open(QFile::encodeName(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd < 0)
        return false;
    const bool isFlushed = fsync(folderFd) == 0 || errno == EINVAL;
    close(folderFd);
    return isFlushed;
}

/// Returns false, with the reason in errno, unless the log is on the disk.
bool writeFlushed(const QString& folder, const QString& name, const QByteArray& log)
{
    const QString path = folder + '/' + name;
    // Hidden, and not .txt: what a kill leaves is not taken for a log.
    const QString temporary = folder + QString("/.%1.part").arg(name);
    if (testlog::writeInPlace(temporary, log) && !QFileInfo::exists(path) &&
        std::rename(QFile::encodeName(temporary), QFile::encodeName(path)) == 0)
        return flushFolder(folder);
    const int reason = errno;
    QFile::remove(temporary);
    errno = reason;
    return false;
}
} // namespace

void OutboxWriter::startRun()
{
    name = {{}, 0, false};
    wasFound = isFolder(folder);
}

void OutboxWriter::add(const QStringList& lines, const QDateTime& firstBandAt, bool isTarvekStation)
{
    if (firstBandAt.isNull())
        return;
    if (name.run.isEmpty()) // else it stays, also if the clock was set since
        name.run = newRun(firstBandAt);
    name.isTarvek = isTarvekStation;
    ++name.save; // after a failure too: no name is used twice
    const bool isFound = isFolder(folder);
    errno = ENOENT;
    if (isFound ? !writeFlushed(folder, name.fileName(), testlog::bytes(lines)) : wasFound)
        std::perror(qPrintable(folder + ": the log cannot be written"));
    wasFound = isFound;
}
