// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
std::optional<StationLog> readOnce(const QString& path, QString& reason)
{
    const QFileInfo info(path);
    // A pipe or a device would keep the reader waiting.
    if (info.exists() && !info.isFile()) {
        reason = info.isDir() ? QStringLiteral("the folder cannot be read")
                              : QStringLiteral("it is not a file");
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        reason = file.errorString();
        return std::nullopt;
    }
    const QByteArray bytes = file.read(stationlog::longestLog + 1);
    if (file.error() != QFileDevice::NoError) {
        reason = file.errorString();
        return std::nullopt;
    }
    return stationlog::read(bytes, reason);
}
} // namespace

logfiles::Stamp logfiles::stampOf(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() ? Stamp{file.size(), file.lastModified().toMSecsSinceEpoch()} : Stamp();
}

QStringList logfiles::filesOf(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir() || !info.isReadable() || !info.isExecutable())
        return {path};
    const QDir folder(path);
    QStringList files = folder.entryList(QDir::Files, QDir::Name);
    for (QString& file : files)
        file = folder.filePath(file);
    return files;
}

std::optional<StationLog> logfiles::read(const QString& path, QString& reason)
{
    constexpr int tries = 5;
    Stamp refused;
    for (int i = 0; i < tries; ++i) {
        if (const auto log = readOnce(path, reason))
            return log;
        const Stamp now = stampOf(path);
        if (i > 0 && now == refused)
            break;
        refused = now;
    }
    return std::nullopt;
}
