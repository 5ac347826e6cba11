// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QFile>

/// Resident memory of a process ("self" or its number) in bytes; 0 if there is none such.
inline double residentBytesOf(const QByteArray& process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(QString::fromLatin1(process)));
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("VmRSS:"))
                return line.simplified().split(' ').value(1).toDouble() * 1024;
    return 0;
}
