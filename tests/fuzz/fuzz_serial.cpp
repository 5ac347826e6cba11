// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The serial number: whatever is typed (a case is its UTF-8), at most one file appears, in Logs,
// with the serial in it.

#include "app/testlog.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

#include <iostream>

namespace
{
QTemporaryDir* folder = nullptr;

[[noreturn]] void fail(const QString& problem)
{
    std::cerr << qPrintable(problem) << std::endl;
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static QTemporaryDir temporary;
    folder = &temporary;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    // Deep down, so that a serial that climbs is seen.
    QDir().mkpath(folder->filePath(QStringLiteral("a/b/c/Logs")));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto serial =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QString application = folder->filePath(QStringLiteral("a/b/c"));
    const QString logs = application + QStringLiteral("/Logs");
    const auto lines = testlog::lines(serial, QDate(2026, 1, 1).startOfDay(), {});
    if (!lines.at(1).contains(serial))
        fail(QStringLiteral("the serial is not in the log"));
    testlog::write(testlog::path(application, serial), lines);

    int files = 0;
    QDirIterator found(folder->path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QString path = found.next();
        if (found.fileInfo().isDir() && logs.startsWith(path))
            continue;
        if (found.fileInfo().path() != logs || ++files > 1)
            fail(path);
        QFile::remove(path);
    }
    return 0;
}
