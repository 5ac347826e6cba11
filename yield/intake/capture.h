// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/intake/spool.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QStringList>

#include <array>

class StoreWorker;

/// Puts each log into the spool as soon as the kernel names it, because the next test of the unit
/// overwrites it. Its thread does nothing else.
class Capture
{
public:
    /// paths: folders and files; they need not be there yet. Also spools the logs that changed
    /// last: the watch may have been dead at that time, and the database may be away now.
    Capture(const QStringList& paths, const Spool& usedSpool, StoreWorker& usedWorker);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

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
    /// When a file changed in any way (nanoseconds since 1970), its size and its number; zeros
    /// without a file.
    using Stamp = std::array<qint64, 3>;
    /// What the user named.
    struct Place {
        QString path;
        std::array<quint64, 2> identity{}; ///< The folder's device and number; zeros without one.
        int watch = -1;                    ///< The kernel's number.
        bool isTold = false;               ///< The kernel names every change.
        bool isThere = true;
    };
    struct Unread {
        Stamp stamp{};
        bool isReadable = false;
        bool isNamed = false;
        QElapsedTimer age; ///< Since its last change.
    };

    void look(Place& place);
    void lookAt(const QString& path);
    Stamp stampOf(const QString& path);
    bool keep(const QByteArray& log);
    void tick();

    const Spool spool;
    StoreWorker& worker;
    const int kernel;
    std::vector<Place> places;
    QSet<QString> links; ///< Looked at each second: the kernel does not name what they point to.
    QHash<QString, Stamp> seen;    ///< Files as they were when last looked at.
    QHash<QString, Unread> unread; ///< Files that are not in the spool.
    QStringList toRead;            ///< What a look found.
    bool isLookDue = true;         ///< The kernel may have left out changes.
    bool isFull = false;           ///< The disk of the spool.
    QElapsedTimer sinceTick;
    qint64 tickMs = 1000;
};
