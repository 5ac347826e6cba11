// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/attemptstore.h"

#include <QDateTime>
#include <QStringList>

#include <stdexcept>
#include <vector>

/// The spool cannot be used or written. In one line for people.
class SpoolError : public std::runtime_error
{
public:
    explicit SpoolError(const QString& text)
        : std::runtime_error(text.toStdString())
    {
    }
    QString text() const { return QString::fromUtf8(what()); }
};

/// A folder of logs that wait for one database, as one station's. Each file holds the bytes of a
/// log, and its name is their SHA-256: equal logs wait once.
struct SpoolFolder {
    QString path;
    QString database; ///< An address, or the whole path of a file.
    Station station;

    /// The paths of the logs that wait.
    QStringList waiting() const;
    /// The paths of the logs that cannot be stored. They stay until a person removes them.
    QStringList setAside() const;
    /// Why a log was set aside.
    static QString reasonFor(const QString& asidePath);
    /// After the database has committed it.
    static void remove(const QString& path);
    /// With the reason in a file beside it. Gives a line for people about what was done.
    QString moveAside(const QString& waitingPath, const QString& reason) const;

    /// Those below a --spool folder.
    static std::vector<SpoolFolder> below(const QString& root);
    /// In the user's data folder.
    static QString defaultRoot();
};

/// The spool that this process fills, locked until it ends.
class Spool
{
public:
    /// Makes what is missing. Throws SpoolError, also if another watch fills it.
    Spool(const QString& root, const QString& database, const Station& station);
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    const SpoolFolder& folder() const { return place; }

    /// The log is on the disk when this returns. One that waits already or was set aside is not
    /// kept again. Throws SpoolError.
    void keep(const QByteArray& log);

    /// When everything in the watched folders had been looked at; 1970 in a new spool. The next
    /// watch begins with what changed since.
    QDateTime lastLook() const;
    void noteLook();

private:
    SpoolFolder place;
    int lock = -1;
};
