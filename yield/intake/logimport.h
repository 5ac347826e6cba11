// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

/// Which logs go where.
struct ImportRequest {
    QString database;
    Station station;
    QStringList paths; ///< Folders and files.
};

/// What a command tells the shell, beside 0.
namespace exitstatus
{
constexpr int incomplete = 1; ///< A file was refused; a unit is not complete.
constexpr int failed = 2;     ///< The command could not do what it is for.
} // namespace exitstatus

namespace logimport
{
/// So many logs are stored in one transaction: enough to keep its cost small, few enough that
/// others wait for a moment only.
constexpr int batchSize = 1000;

/// How a log that was refused is named.
QString refusal(const QString& path, const QString& reason);

/// What became of the logs, in one line.
QString summary(const StoreCounts& counts, int refused);

/// Imports once. Gives the status for the shell.
int run(const ImportRequest& request, QTextStream& out, QTextStream& errors);
} // namespace logimport
