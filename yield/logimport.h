// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/attemptstore.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

/// Which logs go where.
struct ImportRequest {
    QString database;
    Station station;
    QStringList paths; ///< Folders and files.
};

namespace logimport
{
/// So many logs are stored in one transaction: enough to keep its cost small, few enough that
/// others wait for a moment only.
constexpr int batchSize = 1000;

/// How a log that was refused is named.
QString refusal(const QString& path, const QString& reason);

/// What became of the logs, in one line.
QString summary(const StoreCounts& counts, int refused);

/// Imports once. The status for the shell: 0; 1 if a file was refused; 2 if the database failed.
int run(const ImportRequest& request, QTextStream& out, QTextStream& errors);
} // namespace logimport
