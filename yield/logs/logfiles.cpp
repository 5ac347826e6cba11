// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/logfiles.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace
{
/// What Qt reads where a name is not valid UTF-8.
const QChar invalid(QChar::ReplacementCharacter);
} // namespace

QStringList logfiles::filesOf(const QString& path)
{
    // In a folder that may be listed but not entered the files would seem gone.
    if (!QFileInfo(path).isExecutable())
        return {path};
    // Not by QDir, which leaves out a file whose name is not valid UTF-8.
    std::error_code problem;
    std::error_code noFile;
    QStringList files;
    for (std::filesystem::directory_iterator entry(QFile::encodeName(path).toStdString(), problem);
         entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
        const bool isHidden = entry->path().filename().string().front() == '.';
        // A link to nothing counts: its file may come.
        if (!isHidden && !entry->is_directory(noFile))
            files << QFile::decodeName(entry->path().c_str());
    }
    if (problem) // no folder, or the reason comes from reading it
        files << path;
    files.sort();
    return files;
}

bool logfiles::isGone(const QString& path)
{
    return !path.contains(invalid) && !QFileInfo::exists(path);
}

LogFile logfiles::read(const QString& path)
{
    // Otherwise not opened: a pipe would keep the reader waiting.
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        throw std::runtime_error(info.isDir() ? "the folder cannot be read" : "it is no file");
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        bytes = file.read(stationlog::maxLogSize + 1); // enough to see that it is too long
    if (file.error() != QFileDevice::NoError)
        throw std::runtime_error(path.contains(invalid) ? "its name is not valid UTF-8"
                                                        : file.errorString().toStdString());
    return {stationlog::read(bytes), OutboxName::read(info.fileName()), path};
}
