// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QTest>
#include <QTextStream>

#include <malloc.h>

/// The reliability tests have two forms: the short one that runs with every other test, and the
/// full one, with ZORVI_SOAK=1 in the environment. Either prints a line for each figure.
namespace figures
{
inline bool isFullForm()
{
    return qEnvironmentVariableIntValue("ZORVI_SOAK") != 0;
}

inline int count(int shortForm, int fullForm)
{
    return isFullForm() ? fullForm : shortForm;
}

/// One row of the table: what was tried, how often, how much of it was lost or wrong.
inline void print(const QString& what, qint64 tried, qint64 lost, const QString& remark = {})
{
    QTextStream(stdout) << "figure | " << what << " | " << tried << " | " << lost << " | " << remark
                        << Qt::endl;
}

/// What this process holds of the machine.
struct Footprint {
    qint64 kilobytes = 0;
    int threads = 0;
    int descriptors = 0;

    static Footprint now()
    {
        Footprint footprint;
        // Free memory goes back first, so that what is counted is in use.
        malloc_trim(0);
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly))
            for (const QByteArray& line : status.readAll().split('\n')) {
                if (line.startsWith("VmRSS:"))
                    footprint.kilobytes = line.simplified().split(' ').value(1).toLongLong();
                if (line.startsWith("Threads:"))
                    footprint.threads = line.simplified().split(' ').value(1).toInt();
            }
        footprint.descriptors = static_cast<int>(
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size());
        return footprint;
    }

    QString text() const
    {
        return QStringLiteral("%1 kB, %2 threads, %3 descriptors")
            .arg(kilobytes)
            .arg(threads)
            .arg(descriptors);
    }
};

/// Whether nothing grew between two footprints but by what an allocator may keep; fails the test
/// otherwise. Sanitizers keep what was freed for a while: their memory says nothing.
inline void compareFlat(const Footprint& before, const Footprint& after)
{
    QCOMPARE(after.threads, before.threads);
    QCOMPARE(after.descriptors, before.descriptors);
#ifndef __SANITIZE_ADDRESS__
    constexpr qint64 slackKilobytes = 4096;
    QVERIFY2(after.kilobytes <= before.kilobytes + slackKilobytes, qPrintable(after.text()));
#endif
}
} // namespace figures
