// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/logs/printabletext.h"
#include "yield/store/stationrename.h"

#include <QTextStream>

namespace
{
int renameStation(const QCommandLineParser& parser)
{
    const QStringList words = command::arguments(parser);
    if (words.size() != 3 || words.constFirst() != "rename")
        return command::fail("station takes the words: rename OLD NEW");
    if (words.at(2).isEmpty())
        return command::fail("a station needs a name");
    Database database(command::database(parser), Database::Access::Read);
    stationrename::rename(database, words.at(1), words.at(2));
    QTextStream(stdout) << QString("\"%1\" is \"%2\" now; a watch that still runs as \"%1\" makes "
                                   "it again")
                               .arg(printableText(words.at(1)), printableText(words.at(2)))
                        << Qt::endl;
    return 0;
}
} // namespace

Command stationCommand()
{
    Command command;
    command.name = "station";
    command.description = "Puts right a station that was named wrongly: OLD becomes NEW. If there "
                          "is a NEW already, it gets the attempts of both, each log once.";
    command.run = renameStation;
    command.argument = "rename OLD NEW";
    command.argumentHelp = "The two names.";
    command.mostArguments = 3;
    return command;
}
