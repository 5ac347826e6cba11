// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/outputfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace
{
/// What is to be replaced as a whole: a file, or nothing yet. Devices have links to files that are
/// open, which no other file can replace.
bool isFile(const QString& path)
{
    const QFileInfo info(path);
    const QString absolute = info.absoluteFilePath();
    return !absolute.startsWith("/dev/") && !absolute.startsWith("/proc/") &&
           (!info.exists() || info.isFile());
}
} // namespace

OutputFile::OutputFile(const QString& path)
    : name(path)
{
    if (path == "-") {
        auto file = std::make_unique<QFile>();
        file->open(stdout, QIODevice::WriteOnly);
        output = std::move(file);
    } else {
        if (isFile(path))
            output = std::make_unique<QSaveFile>(path);
        else
            output = std::make_unique<QFile>(path);
        output->open(QIODevice::WriteOnly);
    }
}

bool OutputFile::finish()
{
    if (auto* const file = dynamic_cast<QSaveFile*>(output.get()))
        return file->commit();
    return output->flush() && output->error() == QFileDevice::NoError;
}

QString OutputFile::problem() const
{
    return QString("%1: %2").arg(name == "-" ? "standard output" : name, output->errorString());
}
