// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/walltime.h"

#include <QDateTime>

qint64 walltime::secondsBetween(const QString& earlier, const QString& later)
{
    const auto utc = "Z";
    return QDateTime::fromString(earlier + utc, Qt::ISODate)
        .secsTo(QDateTime::fromString(later + utc, Qt::ISODate));
}
