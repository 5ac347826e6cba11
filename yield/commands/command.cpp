// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include "yield/intake/logimport.h"
#include "yield/intake/spool.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <QVector>

#include <cstdio>
#include <stdexcept>

namespace
{
/// What is to be replaced as a whole: a file, or nothing yet. Devices have links to files that are
/// open, which no other file can replace.
bool isFile(const QString& path)
{
    const QFileInfo info(path);
    const QString absolute = info.absoluteFilePath();
    return path != "-" && !absolute.startsWith("/dev/") && !absolute.startsWith("/proc/") &&
           (!info.exists() || info.isFile());
}

/// In the order of the help.
QVector<Command> commands()
{
    return {importCommand(), reportCommand(), unitCommand(),   exportCommand(),
            checkCommand(),  statusCommand(), stationCommand()};
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

/// What was refused is not repeated: there might be a password in it.
void refuseAddress(const QString& argument, bool isSerial)
{
    if (argument.startsWith("postgres:") || argument.startsWith("postgresql:") ||
        (Database::isAddress(argument) && !isSerial)) // a serial may be any other address
        command::fail("a database's address goes after --database");
}

int runCommand(const Command& chosen, const QStringList& words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(chosen.description);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(chosen.options);
    parser.addOption({"database",
                      QString("An SQLite file, or postgresql://user@host:port/name, whose password "
                              "is taken from ~/.pgpass or PGPASSWORD (default: %1).")
                          .arg(Database::defaultLocation()),
                      "database", Database::defaultLocation()});
    parser.addPositionalArgument(chosen.name, QString());
    if (!chosen.argument.isEmpty())
        parser.addPositionalArgument(chosen.argument, chosen.argumentHelp);
    if (!parser.parse(words))
        command::fail(parser.errorText());
    if (parser.isSet(help) || parser.isSet("help-all"))
        parser.showHelp();
    const QStringList arguments = command::arguments(parser);
    for (const QString& argument : arguments)
        refuseAddress(argument, chosen.name == "unit");
    if (arguments.size() > chosen.mostArguments)
        command::fail(QString("unexpected argument \"%1\"").arg(arguments[chosen.mostArguments]));
    return chosen.run(parser);
}

int runWords(const QStringList& words)
{
    const QString name = words.value(1);
    for (const Command& known : commands())
        if (known.name == name)
            return runCommand(known, words);
    QTextStream out(stdout);
    if (name == "--version" || name == "-v") {
        out << QCoreApplication::applicationName() << ' ' << QCoreApplication::applicationVersion()
            << '\n';
    } else if (name == "--help" || name == "-h") {
        out << overview();
    } else {
        refuseAddress(name, false);
        command::fail(name.isEmpty() || name.startsWith('-')
                          ? QString("which command? It comes first; see --help")
                          : QString("there is no command \"%1\"; see --help").arg(name));
    }
    return 0;
}
} // namespace

int command::run(const QStringList& arguments)
{
    try {
        return runWords(arguments);
    } catch (const std::runtime_error& error) {
        QTextStream(stderr) << QCoreApplication::applicationName() << ": "
                            << QString::fromUtf8(error.what()) << Qt::endl;
        return exitstatus::failed;
    }
}

void command::fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
}

QStringList command::arguments(const QCommandLineParser& parser)
{
    return parser.positionalArguments().mid(1);
}

QCommandLineOption command::spoolOption()
{
    return {
        "spool",
        QString("The folder where \"import --watch\" keeps logs for the database (default: %1).")
            .arg(Spool::defaultRoot()),
        "folder"};
}

void command::writeFile(const QString& path, const std::function<bool(QFileDevice&)>& write)
{
    QSaveFile replacing(path);
    QFile through(path);
    const bool isReplaced = isFile(path);
    QFileDevice& file = isReplaced ? static_cast<QFileDevice&>(replacing) : through;
    const bool isOpen =
        path == "-" ? through.open(stdout, QIODevice::WriteOnly) : file.open(QIODevice::WriteOnly);
    const bool isWritten = isOpen && write(file) && file.flush() &&
                           file.error() == QFileDevice::NoError &&
                           (!isReplaced || replacing.commit());
    if (!isWritten)
        fail(QString("%1: %2").arg(path == "-" ? "standard output" : path, file.errorString()));
}
