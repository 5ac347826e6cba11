// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include "yield/intake/messages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QSysInfo>
#include <QVector>

#include <cstdio>
#include <stdexcept>

namespace
{
/// What is to be replaced as a whole: a file, or nothing yet. The devices' folders have links to
/// open files, which no other file can replace.
bool isFile(const QString& path)
{
    const QFileInfo info(path);
    return path != "-" && !path.startsWith("/dev/") && !path.startsWith("/proc/") &&
           (!info.exists() || info.isFile());
}

QVector<Command> commands()
{
    return {collectCommand(), importCommand(), reportCommand(), unitCommand(),
            exportCommand(),  statusCommand(), stationCommand()};
}

QString overview()
{
    QString text = QString("Usage: zorvi_yield COMMAND [options]\n"
                           "Imports test logs and reports yield.\n\n"
                           "Commands (\"zorvi_yield COMMAND --help\" lists their options):\n");
    for (const Command& known : commands())
        text += QString("  %1 %2\n").arg(known.name, -8).arg(known.description);
    return text + "\nOptions:\n  --help, --version";
}

/// The argument is not repeated: there might be a password in it.
void rejectAddress(const QString& argument, bool isSerial)
{
    if (argument.startsWith("postgres:") || argument.startsWith("postgresql:") ||
        (Database::isAddress(argument) && !isSerial)) // a serial may be any other address
        command::fail("a database's address goes after --database");
}

ExitStatus runCommand(const Command& chosen, QStringList words)
{
    words.removeAt(1); // its name
    QCommandLineParser parser;
    parser.setApplicationDescription(chosen.description);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(chosen.options);
    parser.addOption({"database",
                      QString("An SQLite file, or postgresql://user@host:port/name, whose password "
                              "is taken from ~/.pgpass or PGPASSWORD (default: %1).")
                          .arg(Database::defaultLocation()),
                      "database", Database::defaultLocation()});
    parser.addPositionalArgument(chosen.name, QString(), chosen.name + ' ' + chosen.argument);
    if (!parser.parse(words))
        command::fail(parser.errorText());
    if (parser.isSet(help) || parser.isSet("help-all"))
        parser.showHelp();
    const QStringList arguments = parser.positionalArguments();
    for (const QString& argument : arguments)
        rejectAddress(argument, chosen.name == "unit");
    if (chosen.argument.isEmpty() && !arguments.isEmpty())
        command::fail(QString("unexpected argument \"%1\"").arg(arguments[0]));
    return chosen.run(parser);
}
} // namespace

ExitStatus command::run(const QStringList& words)
{
    const QString name = words.value(1);
    try {
        for (const Command& known : commands())
            if (known.name == name)
                return runCommand(known, words);
        rejectAddress(name, false);
        if (name == "--version" || name == "-v")
            messages::print("zorvi_yield " + QCoreApplication::applicationVersion());
        else if (name == "--help" || name == "-h")
            messages::print(overview());
        else
            fail(name.isEmpty() || name.startsWith('-')
                     ? QString("missing COMMAND; see --help")
                     : QString("there is no command \"%1\"; see --help").arg(name));
        return ExitStatus::Success;
    } catch (const std::runtime_error& error) {
        messages::warn(QString("zorvi_yield: %1").arg(error.what()));
        return ExitStatus::Error;
    }
}

void command::fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
}

QCommandLineOption command::hiddenOption(const QString& name, const QString& valueName)
{
    QCommandLineOption option(name, {}, valueName);
    option.setFlags(QCommandLineOption::HiddenFromHelp);
    return option;
}

QList<QCommandLineOption> command::stationOptions()
{
    return {{"station", "The station that the logs come from (default: this computer's name).",
             "name", QSysInfo::machineHostName()},
            {"tests-component-18", "The station tests component 18. The database remembers it."},
            hiddenOption("tests-18")};
}

QCommandLineOption command::spoolOption()
{
    const QString standard =
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/spool";
    const QString help =
        "The spool of version 1.2.0, whose pending logs are stored at the start (default: %1).";
    return {"spool", help.arg(standard), "folder", standard};
}

Station command::stationOf(const QCommandLineParser& parser)
{
    const Station station{parser.value("station"),
                          parser.isSet("tests-component-18") || parser.isSet("tests-18")};
    if (station.name.isEmpty())
        fail("a station needs a name");
    return station;
}

CollectRequest command::collectRequest(const QCommandLineParser& parser)
{
    const QStringList folders = parser.positionalArguments();
    if (folders.size() != 1)
        fail("collect takes one LOGS, the folder that a station writes to");
    return {parser.value("database"), stationOf(parser), folders[0], parser.value("spool")};
}

void command::writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write)
{
    QSaveFile replacing(path);
    QFile through(path);
    const bool isReplaced = isFile(path);
    QFileDevice& file = isReplaced ? static_cast<QFileDevice&>(replacing) : through;
    const bool isOpen =
        path == "-" ? through.open(stdout, QIODevice::WriteOnly) : file.open(QIODevice::WriteOnly);
    if (!isOpen || !write(file) || !file.flush() || (isReplaced && !replacing.commit()))
        fail(QString("%1: %2").arg(path == "-" ? "standard output" : path, file.errorString()));
}
