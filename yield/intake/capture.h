// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/spool.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QSet>

#include <array>
#include <optional>

class StoreWorker;

/// Puts each log into the spool as soon as the kernel names it, because the next test of the unit
/// overwrites it. Its thread does nothing else.
class Capture
{
public:
    /// paths: folders and files; they need not be there yet. Also spools the logs that changed
    /// last: the watch may have been dead at that time, and the database may be away now.
    Capture(const QStringList& paths, const Spool& usedSpool, StoreWorker& usedWorker);

    /// Readable when files changed; -1 where the kernel cannot tell.
    int descriptor() const { return kernel; }
    /// Reads what the kernel has named.
    void readEvents();
    /// Does what is due beside the events; gives the milliseconds until there is more to do.
    int work();
    /// Spools a log. A file that cannot be read or kept is tried again; one that is no log is named
    /// when it does not change any more.
    void readLog(const QString& path);

private:
    struct Place {
        QString path; ///< As the user named it.
        /// Device and number of what is there, zeros without anything.
        std::optional<std::array<quint64, 2>> identity{};
        int watch = -1;      ///< The kernel's number.
        bool isTold = false; ///< The kernel names every change.
    };
    /// A file that is not in the spool.
    struct Unread {
        qint64 changedAt = 0;
        bool isReadable = false;
        bool isNamed = false;
    };

    void lookAround();
    bool look(Place& place);
    void lookAt(const QString& path);
    qint64 changeOf(const QString& path);
    bool keep(const QByteArray& log);

    const Spool spool;
    StoreWorker& worker;
    const int kernel; ///< Open until the end of the process.
    std::vector<Place> places;
    QSet<QString> links; ///< Looked at each second: the kernel does not name what they point to.
    QHash<QString, qint64> seen; ///< When files had changed as they were looked at last.
    QHash<QString, Unread> unread;
    QStringList toRead;    ///< What a look found.
    bool isLookDue = true; ///< The kernel may have left out changes.
    bool isFull = false;   ///< The disk of the spool.
    QDeadlineTimer nextLook;
};
