// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/messages.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptstore.h"

namespace
{
ExitStatus renameStation(const QCommandLineParser& parser)
{
    const QStringList words = parser.positionalArguments();
    if (words.size() != 3 || words[0] != "rename" || words[2].isEmpty())
        command::fail("station takes the words: rename OLD NEW");
    Database database(parser.value("database"), Database::Access::Read);
    attemptstore::renameStation(database, words[1], words[2]);
    const QString oldName = printableText(words[1]);
    messages::print(QString("renamed \"%1\" to \"%2\"; a collector running as \"%1\" recreates it")
                        .arg(oldName, printableText(words[2])));
    return ExitStatus::Success;
}
} // namespace

Command stationCommand()
{
    return {
        "station",
        "Corrects the name of a station: OLD becomes NEW. If there is a station NEW already, it "
        "gets the attempts of both, each log once.",
        renameStation,
        {},
        "rename OLD NEW"};
}
