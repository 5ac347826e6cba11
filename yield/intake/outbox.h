// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

/// The folder LOGS/Outbox, where a station puts each log of a run under a name of its own, with the
/// folders Stored and Rejected in it. No function deletes or overwrites a file or follows a link.
/// Everything throws std::runtime_error, whose text names the file or folder.
class Outbox
{
public:
    /// logs: the folder that the station writes to.
    explicit Outbox(const QString& logs);

    QString path() const { return folder; }

    // Of the outbox itself, or of its subfolder "/Stored" or "/Rejected".
    bool exists(const QString& subfolder = {}) const;
    /// Makes it as open as LOGS, and writable for its group. Throws while LOGS is missing.
    void make(const QString& subfolder = {}) const;
    /// The paths of the logs in it, oldest run first. Files with other names are left alone.
    QStringList logs(const QString& subfolder = {}) const;

    /// Moves a pending log to Stored/<yyyy-mm>, the month of the run's start. Returns false if that
    /// name is taken. Nothing happens if another collector has moved the log meanwhile.
    bool moveToStored(const QString& log) const;

    /// Moves a pending log to Rejected, the reason in a file beside it. Returns false if another
    /// collector has moved it meanwhile.
    bool reject(const QString& log, const QString& reason) const;

private:
    const QString logsFolder;
    const QString folder;
};
