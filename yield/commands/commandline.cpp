// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/commandline.h"

#include "yield/commands/command.h"
#include "yield/store/databaseerror.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QVector>

namespace
{
/// In the order of the help.
const QVector<Command>& commands()
{
    static const QVector<Command> all = {importCommand(), reportCommand(), unitCommand(),
                                         exportCommand(), checkCommand(),  statusCommand(),
                                         stationCommand()};
    return all;
}

QString overview()
{
    QString text = QString("Usage: zorvi_yield COMMAND [options]\n"
                           "What the logs of the stations say about many units.\n\n"
                           "Commands (\"zorvi_yield COMMAND --help\" says more):\n");
    for (const Command& known : commands())
        text += QString("  %1 %2\n").arg(known.name, -8).arg(known.description);
    return text + "\nOptions:\n  --help, --version\n";
}

QCommandLineOption optionForDatabase()
{
    return {"database",
            QString("An SQLite file, or postgresql://user@host:port/name, whose password is "
                    "taken from ~/.pgpass or PGPASSWORD (default: %1).")
                .arg(Database::defaultLocation()),
            "database", Database::defaultLocation()};
}

/// The first argument that is neither an option nor the value of one.
QString firstWord(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.addOption(optionForDatabase());
    QStringList names;
    for (const Command& known : commands())
        for (const QCommandLineOption& option : known.options)
            if (!names.contains(option.names().constFirst())) {
                names += option.names();
                parser.addOption(option);
            }
    parser.parse(arguments);
    return parser.positionalArguments().value(0);
}

/// Not repeated where it is refused: there might be a password in it.
const char* const addressRefused = "a database's address goes after --database";

bool isAddressOfDatabase(const QString& argument)
{
    return argument.startsWith("postgres:") || argument.startsWith("postgresql:");
}

int runCommand(const Command& chosen, const QStringList& words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(chosen.description);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(chosen.options);
    parser.addOption(optionForDatabase());
    parser.addPositionalArgument(chosen.name, QString());
    if (!chosen.argument.isEmpty())
        parser.addPositionalArgument(chosen.argument, chosen.argumentHelp);
    if (!parser.parse(words))
        return command::fail(parser.errorText());
    if (parser.isSet(help) || parser.isSet("help-all"))
        parser.showHelp();
    const QStringList arguments = command::arguments(parser);
    for (const QString& argument : arguments)
        // A serial may be any other address.
        if (isAddressOfDatabase(argument) ||
            (Database::isAddress(argument) && chosen.name != "unit"))
            return command::fail(addressRefused);
    if (arguments.size() > chosen.mostArguments)
        return command::fail(
            QString("unexpected argument \"%1\"").arg(arguments.at(chosen.mostArguments)));
    try {
        return chosen.run(parser);
    } catch (const DatabaseError& error) {
        return command::fail(error.text());
    }
}
} // namespace

int commandline::run(const QStringList& arguments)
{
    const QString word = firstWord(arguments);
    for (const Command& known : commands())
        if (known.name == word)
            return runCommand(known, arguments);
    QTextStream out(stdout);
    if (isAddressOfDatabase(word))
        return command::fail(addressRefused);
    if (!word.isEmpty())
        return command::fail(QString("there is no command \"%1\"; see --help").arg(word));
    if (arguments.contains("--version") || arguments.contains("-v")) {
        out << QCoreApplication::applicationName() << ' ' << QCoreApplication::applicationVersion()
            << Qt::endl;
        return 0;
    }
    if (arguments.contains("--help") || arguments.contains("-h")) {
        out << overview();
        return 0;
    }
    return command::fail("which command? See --help");
}
