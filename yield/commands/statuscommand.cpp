// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/messages.h"
#include "yield/intake/outboxstatus.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptreader.h"

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
        messages::print(QString("database %1: unavailable: %2").arg(location, error.text()));
        return false;
    }
}

/// Returns false if it needs attention.
bool showOutbox(const QString& logs)
{
    const QString path = Outbox(logs).path();
    try {
        const OutboxStatus status = outboxstatus::read(logs);
        QString line = QString("outbox %1: %2 pending").arg(path).arg(status.pending);
        if (status.pending > 0)
            line += status.oldest.toString("', oldest 'yyyy-MM-dd HH:mm:ss");
        messages::print(line + QString(", %1 rejected").arg(status.rejected.size()));
        for (const RejectedLog& log : status.rejected)
            messages::print(QString("  rejected: %1: %2").arg(log.name, printableText(log.reason)));
        if (!status.newerLog.isEmpty())
            messages::print(QString("  %1 is newer than every file in the outbox: restart the "
                                    "station, it ran before the update")
                                .arg(printableText(status.newerLog)));
        return !status.needsAttention(QDateTime::currentDateTime());
    } catch (const std::runtime_error& error) {
        messages::print(QString("outbox %1: %2").arg(path, error.what()));
        return false;
    }
}

ExitStatus showStatus(const QCommandLineParser& parser)
{
    const QString location = parser.value("database");
    Database::check(location);
    bool isFine = showDatabase(location);
    for (const QString& logs : parser.positionalArguments())
        isFine = showOutbox(logs) && isFine;
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
            {command::hiddenOption("spool", "folder")},
            "[LOGS...]"};
}
