// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include "yield/logs/messages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
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
void rejectAddress(const QString& argument)
{
    if (argument.startsWith("postgres:") || argument.startsWith("postgresql:"))
        command::fail("a database's address goes after --database");
}

/// Replaces the names of version 1.2.0, for this version.
void replaceFormerNames(QStringList& words)
{
    const QString name = words.value(1);
    if (name == "report")
        words.replaceInStrings(QRegularExpression("^--without(?==|$)"), "--exclude");
    if (name == "import" || name == "collect")
        words.replaceInStrings(QRegularExpression("^--tests-18$"), "--tests-component-18");
    if (name == "import" && words.removeAll("--watch") > 0) {
        messages::warn("\"import --watch\" is \"collect\" since version 1.3.0, and goes with the "
                       "next one");
        words[1] = "collect";
    }
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
        rejectAddress(argument);
    if (chosen.argument.isEmpty() && !arguments.isEmpty())
        command::fail(QString("unexpected argument \"%1\"").arg(arguments[0]));
    return chosen.run(parser);
}
} // namespace

ExitStatus command::run(QStringList words)
{
    try {
        replaceFormerNames(words);
        const QString name = words.value(1);
        for (const Command& known : commands())
            if (known.name == name)
                return runCommand(known, words);
        rejectAddress(name);
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

void command::writeFile(const QString& path, const QByteArray& bytes)
{
    QSaveFile replacing(path);
    QFile through(path);
    const bool isReplaced = isFile(path);
    QFileDevice& file = isReplaced ? static_cast<QFileDevice&>(replacing) : through;
    const bool isOpen =
        path == "-" ? through.open(stdout, QIODevice::WriteOnly) : file.open(QIODevice::WriteOnly);
    if (!isOpen || file.write(bytes) != bytes.size() || !file.flush() ||
        (isReplaced && !replacing.commit()))
        fail(QString("%1: %2").arg(path == "-" ? "standard output" : path, file.errorString()));
}
