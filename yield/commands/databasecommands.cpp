// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptreader.h"

#include <QFileInfo>
#include <QTextStream>

#include <algorithm>

namespace
{
int check(const QCommandLineParser& parser)
{
    Database database(parser.value("database"), Database::Access::Read);
    QTextStream out(stdout);
    const int differences =
        attemptstore::check(database, [&](const QString& line) { out << line << '\n'; });
    if (differences == 0)
        out << "all attempts are as their marks say" << '\n';
    return differences == 0 ? 0 : exitstatus::incomplete;
}

int renameStation(const QCommandLineParser& parser)
{
    const QStringList words = command::arguments(parser);
    if (words.size() != 3 || words[0] != "rename")
        command::fail("station takes the words: rename OLD NEW");
    if (words[2].isEmpty())
        command::fail("a station needs a name");
    Database database(parser.value("database"), Database::Access::Read);
    attemptstore::renameStation(database, words[1], words[2]);
    QTextStream(stdout) << QString("\"%1\" is \"%2\" now; a watch that still runs as \"%1\" makes "
                                   "it again")
                               .arg(printableText(words[1]), printableText(words[2]))
                        << '\n';
    return 0;
}
constexpr int hourSeconds = 3600;

/// False if a person is needed.
bool showDatabase(const QString& location, QTextStream& out)
{
    try {
        Database database(location, Database::Access::Read);
        const auto stations = attemptreader::newestLogs(database, QDateTime::currentDateTime());
        out << "database " << location << ": there\n";
        for (const StationNews& news : stations)
            out << "  station \"" << printableText(news.station) << "\": newest log "
                << (news.newestAt.isEmpty() ? "none" : QString(news.newestAt).replace('T', ' '))
                << '\n';
    } catch (const DatabaseError& error) {
        out << "database " << location << ": away: " << error.text() << '\n';
        return false;
    }
    return true;
}

/// False if a person is needed.
bool showSpool(const Spool& folder, QTextStream& out)
{
    QDateTime oldest = QDateTime::currentDateTime();
    const QDateTime now = oldest;
    const QStringList waiting = folder.waiting();
    for (const QString& path : waiting) {
        const QDateTime keptAt = QFileInfo(path).lastModified();
        if (keptAt.isValid()) // the watch may just have stored it
            oldest = std::min(oldest, keptAt);
    }
    out << "  station \"" << printableText(folder.station.name) << "\", database "
        << folder.database << ": " << waiting.size() << " wait";
    if (!waiting.isEmpty())
        out << " since " << oldest.toString("yyyy-MM-dd HH:mm:ss");
    out << '\n';
    const QStringList aside = folder.setAside();
    for (const QString& path : aside)
        out << "    set aside: " << path << ": " << printableText(Spool::reasonFor(path)) << '\n';
    return aside.isEmpty() && oldest.secsTo(now) <= hourSeconds;
}

int showStatus(const QCommandLineParser& parser)
{
    const QString location = parser.value("database");
    Database::check(location);
    QTextStream out(stdout);
    bool isFine = showDatabase(location, out);
    const QString root = parser.isSet("spool") ? parser.value("spool") : Spool::defaultRoot();
    if (const QFileInfo info(root); info.exists() && !info.isReadable())
        command::fail(QString("the spool %1 cannot be read").arg(root));
    out << "spool " << root << ":\n";
    for (const Spool& folder : Spool::below(root))
        isFine = showSpool(folder, out) && isFine;
    return isFine ? 0 : exitstatus::incomplete;
}
} // namespace

Command checkCommand()
{
    return {"check",
            "Works out anew what the marks of all logs come to, and names what the database has "
            "otherwise. Changes nothing. Exit status 1 if anything differs.",
            check};
}

Command stationCommand()
{
    return {"station",
            "Puts right a station that was named wrongly: OLD becomes NEW. If there is a NEW "
            "already, it gets the attempts of both, each log once.",
            renameStation,
            {},
            "rename OLD NEW",
            "The two names.",
            3};
}

Command statusCommand()
{
    return {
        "status",
        "Says whether the database is there, each station's newest log, how many logs wait in "
        "the spool of \"import --watch\" and which were set aside. Exit status 1 if a person is "
        "needed: the database is away, a log was set aside, or logs have waited for an hour.",
        showStatus,
        {command::spoolOption()}};
}
