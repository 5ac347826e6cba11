// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/outbox.h"
#include "yield/logs/logfiles.h"
#include "yield/logs/messages.h"
#include "yield/store/attemptreader.h"

#include <QDirIterator>

#include <algorithm>

namespace
{
/// Returns false if it needs attention.
bool showDatabase(const QString& location)
{
    try {
        Database database(location, Database::Access::Read);
        const auto stations = attemptreader::lastLogs(database, QDateTime::currentDateTime());
        messages::print(QString("database %1: available").arg(location));
        for (const LastLog& last : stations)
            messages::print(QString("  station \"%1\": last log %2")
                                .arg(printableText(last.station),
                                     last.testedAt.isEmpty()
                                         ? "none"
                                         : QString(last.testedAt).replace('T', ' ')));
        return true;
    } catch (const DatabaseError& error) {
        messages::print(QString("database %1: unavailable: %2").arg(location, error.what()));
        return false;
    }
}

/// When something in the outbox was written last. Its folders count: Stored was made when the
/// earlier logs had been imported.
QDateTime lastChange(const QString& outbox)
{
    QDateTime newest;
    QDirIterator entries(outbox, QDir::AllEntries | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        newest = std::max(newest, entries.fileInfo().lastModified());
    }
    return newest;
}

/// A log with a mark in LOGS that was written a minute or more after every log of the outbox. Empty
/// if there is none.
QString newerLog(const QString& logs, const QDateTime& newest)
{
    for (const QString& path : logfiles::filesOf(logs)) {
        try {
            if (newest.secsTo(QFileInfo(path).lastModified()) >= 60 &&
                logfiles::read(path).log.marks.any())
                return path;
        } catch (const std::runtime_error&) { // not a log
        }
    }
    return {};
}

/// Returns false if it needs attention. Throws std::runtime_error if it cannot be read.
bool showOutbox(const QString& logs)
{
    const Outbox outbox(logs);
    if (!outbox.exists())
        throw std::runtime_error("missing, nothing collects");
    const QStringList pending = outbox.logs();
    const int rejected = outbox.logs("/Rejected").size();
    const QDateTime now = QDateTime::currentDateTime();
    QDateTime oldest = now;
    for (const QString& log : pending)
        if (const QFileInfo info(log); info.exists()) // or just collected
            oldest = std::min(oldest, info.lastModified());
    messages::print(
        QString("outbox %1: %2 pending%3, %4 rejected")
            .arg(outbox.path(), QString::number(pending.size()),
                 pending.isEmpty() ? "" : oldest.toString("', oldest 'yyyy-MM-dd HH:mm:ss"),
                 QString::number(rejected)));
    const QString newer = newerLog(logs, lastChange(outbox.path()));
    if (!newer.isEmpty())
        messages::print(QString("  %1 is newer than every log of the outbox: restart the station, "
                                "it was started before the update")
                            .arg(printableText(newer)));
    return rejected == 0 && newer.isEmpty() && oldest.secsTo(now) < 3600;
}

ExitStatus showStatus(const QCommandLineParser& parser)
{
    const QString location = parser.value("database");
    Database::check(location);
    bool isFine = showDatabase(location);
    for (const QString& logs : parser.positionalArguments())
        try {
            isFine = showOutbox(logs) && isFine;
        } catch (const std::runtime_error& error) {
            messages::print(QString("outbox %1/Outbox: %2").arg(logs, error.what()));
            isFine = false;
        }
    return isFine ? ExitStatus::Success : ExitStatus::ProblemsFound;
}
} // namespace

Command statusCommand()
{
    return {"status",
            "Shows whether the database is available, each station's last log, and what is pending "
            "or was rejected in each outbox. Exit status 1 if something needs attention: the "
            "database is unavailable, a log was rejected or is pending for an hour, or a station "
            "writes logs but not to its outbox.",
            showStatus,
            {},
            "[LOGS...]"};
}
