// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/logfiles.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace
{
/// Qt reads what is not in the system's encoding as this character.
bool hasForeignName(const QString& path)
{
    return path.contains(QChar(QChar::ReplacementCharacter));
}
} // namespace

QStringList logfiles::filesOf(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir() || !info.isReadable() || !info.isExecutable())
        return {path};
    // Not by QDir, which leaves out a file whose name is in a foreign encoding.
    std::error_code problem;
    std::error_code noFile;
    QStringList files;
    for (std::filesystem::directory_iterator entry(QFile::encodeName(path).toStdString(), problem);
         entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
        const bool isHidden = entry->path().filename().string().front() == '.';
        // A link to nothing counts: its file may come.
        const bool isFile =
            entry->is_regular_file(noFile) || (entry->is_symlink(noFile) && !entry->exists(noFile));
        if (!isHidden && isFile)
            files << QFile::decodeName(entry->path().c_str());
    }
    if (problem) // the reading of the folder says so
        files << path;
    files.sort();
    return files;
}

bool logfiles::isGone(const QString& path)
{
    return !hasForeignName(path) && !QFileInfo::exists(path);
}

/// By the system's own calls: QFile and QFileInfo took more time than all the rest of an import.
std::optional<QByteArray> logfiles::bytesOf(const QString& path, QString& reason)
{
    // A pipe or a device must not keep the reader waiting.
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QByteArray bytes(stationlog::longestLog + 1, Qt::Uninitialized);
    const auto size =
        file < 0 ? -1 : ::read(file, bytes.data(), static_cast<std::size_t>(bytes.size()));
    const int error = errno;
    if (file >= 0)
        close(file);
    if (size < 0) {
        reason = hasForeignName(path) ? QString("its name has a foreign encoding")
                 : error == EISDIR    ? QString("the folder cannot be read")
                                      : QString::fromLocal8Bit(std::strerror(error));
        return std::nullopt;
    }
    bytes.truncate(static_cast<int>(size));
    return bytes;
}

std::optional<StationLog> logfiles::read(const QString& path, QString& reason)
{
    constexpr int tries = 5;
    QByteArray refused;
    for (int i = 0; i < tries; ++i) {
        const auto bytes = bytesOf(path, reason);
        if (!bytes || (i > 0 && *bytes == refused))
            return std::nullopt;
        if (auto log = stationlog::read(*bytes, reason))
            return log;
        refused = *bytes;
    }
    return std::nullopt;
}
