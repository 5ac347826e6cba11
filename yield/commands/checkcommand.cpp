// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/store/databasecheck.h"

#include <QTextStream>

namespace
{
int check(const QCommandLineParser& parser)
{
    Database database(command::database(parser), Database::Access::Read);
    QTextStream out(stdout);
    const int differences =
        databasecheck::check(database, [&](const QString& line) { out << line << '\n'; });
    if (differences == 0)
        out << "all attempts are as their marks say" << '\n';
    return differences == 0 ? 0 : exitstatus::incomplete;
}
} // namespace

Command checkCommand()
{
    Command command;
    command.name = "check";
    command.description = "Works out anew what the marks of all logs come to, and names what the "
                          "database has otherwise. Changes nothing. Exit status 1 if anything "
                          "differs.";
    command.run = check;
    return command;
}
