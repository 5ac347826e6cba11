// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QStringList>

#include <vector>

/// A folder of logs that wait for one database, as one station's. Each file holds the bytes of a
/// log, and its name is their SHA-256: equal logs wait once.
struct Spool {
    QString path;
    QString database; ///< An address, or the whole path of a file.
    Station station;

    /// The spool below a --spool folder that this process alone fills, until it ends. Makes what is
    /// missing. Throws std::runtime_error, also if another watch uses the folder, or if logs wait
    /// there for another database.
    static Spool locked(const QString& root, const QString& database, const Station& station);
    /// Those below a --spool folder.
    static std::vector<Spool> below(const QString& root);

    /// The log is on the disk when this returns. One that waits already or was set aside is not
    /// kept again. Throws std::runtime_error.
    void keep(const QByteArray& log) const;
    /// The paths of the logs that wait.
    QStringList waiting() const;
    /// Moves a log that cannot be stored, with the reason in a file beside it. It stays until a
    /// person removes it. Gives a line for people about what was done.
    QString moveAside(const QString& waitingPath, const QString& reason) const;
    /// The paths of the logs that were moved aside, each with its reason.
    QStringList setAside() const;
};
