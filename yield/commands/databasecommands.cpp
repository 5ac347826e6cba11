// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/logs/printabletext.h"

#include <QTextStream>

namespace
{
int check(const QCommandLineParser& parser)
{
    Database database(command::database(parser), Database::Access::Read);
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
    Database database(command::database(parser), Database::Access::Read);
    attemptstore::renameStation(database, words[1], words[2]);
    QTextStream(stdout) << QString("\"%1\" is \"%2\" now; a watch that still runs as \"%1\" makes "
                                   "it again")
                               .arg(printableText(words[1]), printableText(words[2]))
                        << '\n';
    return 0;
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
