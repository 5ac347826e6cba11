// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/intake/spool.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptreader.h"

#include <QFileInfo>

#include <algorithm>

namespace
{
int renameStation(const QCommandLineParser& parser)
{
    const QStringList words = parser.positionalArguments();
    if (words.size() != 3 || words[0] != "rename" || words[2].isEmpty())
        command::fail("station takes the words: rename OLD NEW");
    Database database(parser.value("database"), Database::Access::Read);
    attemptstore::renameStation(database, words[1], words[2]);
    messages::tell(QString("\"%1\" is \"%2\" now; a watch that still runs as \"%1\" makes it again")
                       .arg(printableText(words[1]), printableText(words[2])));
    return 0;
}

/// False if a person is needed.
bool showDatabase(const QString& location)
{
    try {
        Database database(location, Database::Access::Read);
        const auto stations = attemptreader::lastLogs(database, QDateTime::currentDateTime());
        messages::tell(QString("database %1: there").arg(location));
        for (const LastLog& news : stations)
            messages::tell(QString("  station \"%1\": newest log %2")
                               .arg(printableText(news.station),
                                    news.testedAt.isEmpty()
                                        ? "none"
                                        : QString(news.testedAt).replace('T', ' ')));
        return true;
    } catch (const DatabaseError& error) {
        messages::tell(QString("database %1: away: %2").arg(location, error.text()));
        return false;
    }
}

/// False if a person is needed.
bool showSpool(const Spool& spool)
{
    constexpr int hourSeconds = 3600;
    const QDateTime now = QDateTime::currentDateTime();
    const QStringList waiting = spool.waiting();
    QDateTime oldest = now;
    for (const QString& path : waiting) {
        const QDateTime keptAt = QFileInfo(path).lastModified();
        if (keptAt.isValid()) // the watch may just have stored it
            oldest = std::min(oldest, keptAt);
    }
    const QString since =
        waiting.isEmpty() ? QString() : oldest.toString("' since 'yyyy-MM-dd HH:mm:ss");
    messages::tell(QString("  station \"%1\", database %2: %3 wait%4")
                       .arg(printableText(spool.station.name), spool.database,
                            QString::number(waiting.size()), since));
    const QStringList aside = spool.setAside();
    for (const QString& line : aside)
        messages::tell("    set aside: " + printableText(line));
    return aside.isEmpty() && oldest.secsTo(now) <= hourSeconds;
}

int showStatus(const QCommandLineParser& parser)
{
    const QString location = parser.value("database");
    Database::check(location);
    bool isFine = showDatabase(location);
    const QString root = parser.value("spool");
    const auto spools = Spool::below(root);
    const QString about = QFileInfo::exists(root) ? " nothing waits" : " it is not there";
    messages::tell(QString("spool %1:%2").arg(root, spools.empty() ? about : ""));
    for (const Spool& spool : spools)
        isFine = showSpool(spool) && isFine;
    return isFine ? 0 : exitstatus::incomplete;
}
} // namespace

Command stationCommand()
{
    return {"station",
            "Puts right a station that was named wrongly: OLD becomes NEW. If there is a NEW "
            "already, it gets the attempts of both, each log once.",
            renameStation,
            {},
            "rename OLD NEW"};
}

Command statusCommand()
{
    return {
        "status",
        "Says whether the database is there, each station's newest log, and what waits or was set "
        "aside in the spool of \"import --watch\". Exit status 1 if a person is needed: the "
        "database is away, a log was set aside, or logs have waited for an hour.",
        showStatus,
        {command::spoolOption()}};
}
