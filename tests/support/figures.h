// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDir>
#include <QTest>
#include <QTextStream>

#include <malloc.h>

/// The reliability tests have two forms: the short one runs with every other test, the full one
/// with ZORVI_SOAK=1 in the environment. Both print a line for each figure.
namespace figures
{
inline int count(int shortForm, int fullForm)
{
    return qEnvironmentVariableIntValue("ZORVI_SOAK") != 0 ? fullForm : shortForm;
}

/// One row of the table: what was tried, how often, how much of it was lost or wrong.
inline void print(const QString& what, int tried, int lost, const QString& remark = {})
{
    QTextStream(stdout) << "figure | " << what << " | " << tried << " | " << lost << " | " << remark
                        << Qt::endl;
}

/// What this process holds of the machine.
struct Footprint {
    qint64 heapKilobytes;
    int threads;
    int descriptors;

    static Footprint now()
    {
        const auto heap = mallinfo2();
        const auto entries = [](const char* folder) {
            return static_cast<int>(QDir(folder).entryList(QDir::AllEntries | QDir::System).size());
        };
        return {static_cast<qint64>((heap.uordblks + heap.hblkhd) / 1024),
                entries("/proc/self/task"), entries("/proc/self/fd")};
    }
};

/// Fails the test if something grew since then by more than caches may take.
/// Sanitizers have a heap of their own, of which this says nothing.
inline void compareFlat(const Footprint& before, const Footprint& after)
{
    constexpr qint64 cachesKilobytes = 1024;
    QCOMPARE(after.threads, before.threads);
    QCOMPARE(after.descriptors, before.descriptors);
    const qint64 grown = after.heapKilobytes - before.heapKilobytes;
    QVERIFY2(grown <= cachesKilobytes, qPrintable(QString("%1 kB").arg(grown)));
}
} // namespace figures
