// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>

/// What cannot be done in an outbox, in one line that names the file or folder.
class OutboxError : public std::runtime_error
{
public:
    explicit OutboxError(const QString& text)
        : std::runtime_error(text.toStdString())
    {
    }
};

/// The folder LOGS/Outbox, where a station puts each log of a run under a name of its own, with the
/// folders Stored and Rejected in it. No function deletes or overwrites a file or follows a link.
/// Logs are named by their file names. Everything throws OutboxError.
class Outbox
{
public:
    /// logs: the folder that the station writes to.
    explicit Outbox(const QString& logs);

    QString path() const { return folder; }
    QString pathOf(const QString& name) const { return folder + '/' + name; }

    /// Throws while LOGS is missing.
    bool exists() const;

    /// Makes the folders that are missing, as open as LOGS and writable for its group.
    void make() const;

    /// The logs that are not stored yet, oldest run first. Files with other names are left alone.
    QStringList pending() const;

    /// Whether Stored has a file of that name, or without a name, any.
    bool hasStored(const QString& name = {}) const;

    /// Moves a log to Stored/<yyyy-mm>, the month of the run's start. Nothing happens if another
    /// collector has moved it meanwhile.
    void moveToStored(const QString& name) const;

    /// Moves a log to Rejected, the reason in a file beside it. Returns false if another collector
    /// has moved it meanwhile.
    bool reject(const QString& name, const QString& reason) const;

    /// A line for each rejected log: its name and the reason.
    QStringList rejected() const;

private:
    QString storedPath(const QString& name) const;

    const QString logsFolder;
    const QString folder;
};
