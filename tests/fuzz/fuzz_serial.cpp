// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The serial number: whatever is typed (a case is its UTF-8), at most one file appears, in Logs,
// with the serial in it.

#include "app/testlog.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto serial =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    // Deep down, so that a serial that climbs is seen.
    static const QTemporaryDir folder;
    const QString application = folder.filePath(QStringLiteral("a/b/c"));
    const QString logs = application + QStringLiteral("/Logs");
    QDir().mkpath(logs);
    const auto lines = testlog::lines(serial, QDate(2026, 1, 1).startOfDay(), {});
    testlog::write(testlog::path(application, serial), lines);

    bool isRight = lines.at(1).contains(serial);
    int files = 0;
    QDirIterator found(folder.path(), QDir::Files | QDir::System | QDir::Hidden,
                       QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QString path = found.next();
        isRight = isRight && found.fileInfo().path() == logs && ++files == 1;
        QFile::remove(path);
    }
    if (!isRight)
        std::abort();
    return 0;
}
