// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/attempttext.h"
#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptreader.h"

#include <QTextStream>

namespace
{
int showUnit(const QCommandLineParser& parser)
{
    if (command::arguments(parser).isEmpty())
        return command::fail("which serial?");
    const QString serial = command::arguments(parser).constFirst();
    Database database(command::database(parser), Database::Access::Read);
    QTextStream out(stdout);
    bool isFound = false;
    bool isComplete = false;
    attemptreader::forEachOf(database, serial, [&](const Attempt& attempt) {
        isFound = true;
        isComplete = attemptrules::outcomeOf(attempt.marks, attempt.tests18).isComplete();
        out << attempttext::line(attempt) << '\n';
    });
    if (!isFound)
        command::warn(
            QString("no attempt at a unit with the serial \"%1\"").arg(printableText(serial)));
    return isComplete ? 0 : exitstatus::incomplete;
}
} // namespace

Command unitCommand()
{
    Command command;
    command.name = "unit";
    command.description = "Lists every attempt at a unit and what each missed. Exit status 1 if "
                          "the last one is not complete.";
    command.run = showUnit;
    command.argument = "SERIAL";
    command.argumentHelp = "The serial as it was typed; after \"--\" if it begins with a dash.";
    command.mostArguments = 1;
    return command;
}
