// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QStringList>

#include <array>
#include <deque>

class Spool;
class StoreWorker;
struct inotify_event;

/// Puts each log into the spool as soon as the kernel names it, because the next test of the unit
/// overwrites it. Its thread does nothing else.
class Capture
{
public:
    /// paths: folders and files; they need not be there yet. Also spools what changed since the
    /// last watch, but at most the newest thousand: the worker reads them all.
    Capture(const QStringList& paths, Spool& usedSpool, StoreWorker& usedWorker);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Readable when files changed; -1 where the kernel cannot tell.
    int descriptor() const { return kernel; }
    /// Reads what the kernel has named.
    void readEvents();
    /// Does what is due beside the events; gives the milliseconds until there is more to do.
    int work();
    /// Spools a log. A file that cannot be read is tried again; one that is no log is named when it
    /// does not change any more.
    void readLog(const QString& path);
    /// Whether all that was seen is in the spool.
    bool isDone() const { return toRead.empty() && unkept.isEmpty(); }

private:
    /// When a file changed in any way (nanoseconds since 1970), its size and its number; zeros
    /// without a file.
    using Stamp = std::array<qint64, 3>;
    /// A folder, or one file of a folder.
    struct Place {
        QString path;
        QString folder;
        QString file;                      ///< Empty for all.
        int watch = -1;                    ///< The kernel's number.
        std::array<quint64, 2> identity{}; ///< The folder's device and number.
        bool isShared = false; ///< Looked at each second: the kernel does not tell everything.
    };
    struct Unread {
        Stamp stamp{};
        QString reason;
        bool isReadable = false;
        bool isNamed = false;
        QElapsedTimer age; ///< Since its last change.
    };

    static Stamp stampOf(const QString& path);
    void handle(const inotify_event& event, const QString& name);
    void addPlace(const QString& path);
    void addTarget(const QString& link);
    void watchPlace(Place& place);
    void checkPlace(Place& place, bool isLost);
    QStringList changedIn(const Place& place);
    void lookAt(const Place& place);
    void lookAtAll();
    void tryAgain();
    void tick();

    Spool& spool;
    StoreWorker& worker;
    const int kernel;
    std::deque<Place> places;      ///< What the user named, then the targets of links.
    QHash<QString, Stamp> seen;    ///< Files as they were when last looked at.
    QHash<QString, Unread> unread; ///< Files that are no logs, as far as is known.
    std::deque<QString> toRead;    ///< What a look found.
    QByteArray unkept;             ///< A log that the spool had no room for.
    QElapsedTimer sinceTick;
    qint64 tickMs = 1000;
    QElapsedTimer sinceNote;
};
