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
    qint64 inUseKilobytes = 0; ///< Of the heap; an allocator keeps more than that after a flood.
    qint64 residentKilobytes = 0;
    int threads = 0;
    int descriptors = 0;

    static Footprint now()
    {
        Footprint footprint;
        const auto heap = mallinfo2();
        footprint.inUseKilobytes = static_cast<qint64>((heap.uordblks + heap.hblkhd) / 1024);
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly))
            for (const QByteArray& line : status.readAll().split('\n')) {
                if (line.startsWith("VmRSS:"))
                    footprint.residentKilobytes =
                        line.simplified().split(' ').value(1).toLongLong();
                if (line.startsWith("Threads:"))
                    footprint.threads = line.simplified().split(' ').value(1).toInt();
            }
        footprint.descriptors = static_cast<int>(
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size());
        return footprint;
    }

    QString text() const
    {
        return QStringLiteral("%1 kB in use, %2 kB resident, %3 threads, %4 descriptors")
            .arg(inUseKilobytes)
            .arg(residentKilobytes)
            .arg(threads)
            .arg(descriptors);
    }
};

/// Fails the test if something grew between two footprints, but for what caches may take.
/// Sanitizers have a heap of their own, which says nothing here.
inline void compareFlat(const Footprint& before, const Footprint& after,
                        qint64 slackKilobytes = 1024)
{
    QCOMPARE(after.threads, before.threads);
    QCOMPARE(after.descriptors, before.descriptors);
    QVERIFY2(after.inUseKilobytes <= before.inUseKilobytes + slackKilobytes,
             qPrintable(after.text()));
}
} // namespace figures
