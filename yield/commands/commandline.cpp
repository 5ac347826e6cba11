// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/commandline.h"

#include "yield/commands/attempttext.h"
#include "yield/commands/reportfile.h"
#include "yield/commands/stopsignals.h"
#include "yield/intake/logimport.h"
#include "yield/intake/logwatch.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/printabletext.h"
#include "yield/store/attemptreader.h"
#include "yield/store/database.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <QSysInfo>
#include <QTemporaryFile>
#include <QTextStream>

#include <climits>
#include <cstdio>

namespace
{
const QString databaseOption = QStringLiteral("database");
const QString stationOption = QStringLiteral("station");
const QString tests18Option = QStringLiteral("tests-18");
const QString watchOption = QStringLiteral("watch");
const QString sinceOption = QStringLiteral("since");
const QString untilOption = QStringLiteral("until");
const QString outputOption = QStringLiteral("output");
const QString formatOption = QStringLiteral("format");

int fail(const QString& text)
{
    QTextStream(stderr) << QCoreApplication::applicationName() << ": " << text << Qt::endl;
    return exitstatus::failed;
}

int importLogs(const QCommandLineParser& parser)
{
    ImportRequest request;
    request.database = parser.value(databaseOption);
    request.station = {parser.value(stationOption), parser.isSet(tests18Option)};
    request.paths = parser.positionalArguments().mid(1);
    if (request.paths.isEmpty())
        return fail(QStringLiteral("which folder or file?"));
    if (request.station.name.isEmpty())
        return fail(QStringLiteral("a station needs a name"));
    QTextStream out(stdout);
    QTextStream errors(stderr);
    if (!parser.isSet(watchOption))
        return logimport::run(request, out, errors);

    const StopSignals stopSignals;
    LogWatch watch(request, out, errors);
    QObject::connect(
        &watch, &LogWatch::signal_Hopeless, &watch,
        [] { QCoreApplication::exit(exitstatus::failed); }, Qt::QueuedConnection);
    watch.start();
    return QCoreApplication::exec();
}

/// The date stays invalid without the option. False, with the reason in error, if the value is no
/// date.
bool readDate(const QCommandLineParser& parser, const QString& option, QDate& date, QString& error)
{
    if (!parser.isSet(option))
        return true;
    date = QDate::fromString(parser.value(option), QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid())
        error = QStringLiteral("--%1 takes a date such as 2026-11-21, not \"%2\"")
                    .arg(option, parser.value(option));
    return date.isValid();
}

int report(const QCommandLineParser& parser)
{
    ReportRequest request;
    QString problem;
    if (!readDate(parser, sinceOption, request.since, problem) ||
        !readDate(parser, untilOption, request.until, problem))
        return fail(problem);
    if (request.since.isValid() && request.until.isValid() && request.until < request.since)
        return fail(QStringLiteral("--until lies before --since"));
    request.station = parser.value(stationOption);

    Database database(parser.value(databaseOption), Database::Access::Read);
    if (!database.isOpen())
        return fail(database.problem());
    QSaveFile file(parser.value(outputOption));
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    if (!writeReport(database.connection(), request, file, problem))
        return fail(problem);
    if (!file.commit())
        return fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    QTextStream(stdout) << QStringLiteral("written: ") << file.fileName() << Qt::endl;
    return 0;
}

int showUnit(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().size() < 2)
        return fail(QStringLiteral("which serial?"));
    const QString serial = parser.positionalArguments().at(1);
    Database database(parser.value(databaseOption), Database::Access::Read);
    if (!database.isOpen())
        return fail(database.problem());
    QTextStream out(stdout);
    QString error;
    bool isFound = false;
    bool isComplete = false;
    const auto show = [&](const Attempt& attempt) {
        isFound = true;
        isComplete = attemptrules::outcomeOf(attempt.marks, attempt.tests18).isComplete();
        out << attempttext::line(attempt) << '\n';
    };
    if (!attemptreader::forEachOf(database.connection(), serial, show, error))
        return fail(error);
    if (!isFound)
        fail(QStringLiteral("no attempt at a unit with the serial \"%1\"")
                 .arg(printableText(serial)));
    return isComplete ? 0 : exitstatus::incomplete;
}

int copyToOutput(QFile& file)
{
    constexpr int pieceSize = 1 << 16;
    QFile out;
    bool isCopied = out.open(stdout, QIODevice::WriteOnly) && file.seek(0);
    while (isCopied && !file.atEnd()) {
        const QByteArray piece = file.read(pieceSize);
        isCopied = !piece.isEmpty() && out.write(piece) == piece.size();
    }
    if (isCopied && out.flush())
        return 0;
    return fail(QStringLiteral("standard output: %1").arg(out.errorString()));
}

int exportAttempts(const QCommandLineParser& parser)
{
    const QString format = parser.value(formatOption);
    const bool isJson = format == QStringLiteral("json");
    if (!isJson && format != QStringLiteral("csv"))
        return fail(QStringLiteral("--format takes csv or json, not \"%1\"").arg(format));
    Database database(parser.value(databaseOption), Database::Access::Read);
    if (!database.isOpen())
        return fail(database.problem());
    // Kept until it is whole: a reader that takes its time must not keep others from importing.
    QTemporaryFile records;
    if (!records.open())
        return fail(QStringLiteral("no temporary file: %1").arg(records.errorString()));
    QByteArray separator = "[\n";
    if (!isJson)
        records.write(attempttext::csvHead());
    const auto write = [&](const Attempt& attempt) {
        if (!isJson) {
            records.write(attempttext::csv(attempt));
            return;
        }
        records.write(separator + attempttext::json(attempt));
        separator = ",\n";
    };
    QString error;
    if (!attemptreader::forEach(database.connection(), write, error))
        return fail(error);
    if (isJson)
        records.write(separator == "[\n" ? "[]\n" : "\n]\n");
    if (!records.flush() || records.error() != QFileDevice::NoError)
        return fail(QStringLiteral("%1: %2").arg(records.fileName(), records.errorString()));
    return copyToOutput(records);
}

struct Command {
    QString name;
    QString description;
    int (*run)(const QCommandLineParser& parser);
    QList<QCommandLineOption> options;
    QString argument; ///< Empty for a command that takes none.
    QString argumentHelp;
    int mostArguments;
};

const QVector<Command>& commands()
{
    static const QString name = QStringLiteral("name");
    static const QString date = QStringLiteral("date");
    static const QVector<Command> all = {
        {QStringLiteral("import"),
         QStringLiteral("Reads logs into the database. Nothing in their folder is changed. The "
                        "same logs again change nothing in the database. Exit status 1 if a file "
                        "is no log."),
         importLogs,
         {{stationOption,
           QStringLiteral("The station that the logs come from (default: this computer's name)."),
           name, QSysInfo::machineHostName()},
          {tests18Option,
           QStringLiteral("The station tests component 18. The database remembers it.")},
          {watchOption,
           QStringLiteral("Go on importing as logs appear, until SIGTERM or Ctrl-C.")}},
         QStringLiteral("FOLDER|FILE..."),
         QStringLiteral("Logs, or folders with logs; folders in a folder are left out."),
         INT_MAX},
        {QStringLiteral("report"),
         QStringLiteral("Writes an HTML page about the yield of many units."),
         report,
         {{sinceOption, QStringLiteral("The first day, such as 2026-11-21."), date},
          {untilOption, QStringLiteral("The last day."), date},
          {stationOption, QStringLiteral("One station only."), name},
          {outputOption, QStringLiteral("The page (default: zorvi_yield.html)."),
           QStringLiteral("file"), QStringLiteral("zorvi_yield.html")}},
         {},
         {},
         0},
        {QStringLiteral("unit"),
         QStringLiteral("Lists every attempt at a unit and what each missed. Exit status 1 if the "
                        "last one is not complete."),
         showUnit,
         {},
         QStringLiteral("SERIAL"),
         QStringLiteral("The serial as it was typed; after \"--\" if it begins with a dash."),
         1},
        {QStringLiteral("export"),
         QStringLiteral("Writes one record for each attempt to standard output."),
         exportAttempts,
         {{formatOption, QStringLiteral("csv or json."), QStringLiteral("csv|json")}},
         {},
         {},
         0},
    };
    return all;
}

QString overview()
{
    QString text = QStringLiteral("Usage: zorvi_yield COMMAND [options]\n"
                                  "What the logs of the stations say about many units.\n\n"
                                  "Commands (\"zorvi_yield COMMAND --help\" says more):\n");
    for (const Command& command : commands())
        text += QStringLiteral("  %1 %2\n").arg(command.name, -8).arg(command.description);
    return text + QStringLiteral("\nOptions:\n  --help, --version\n");
}

QCommandLineOption optionForDatabase()
{
    return {databaseOption,
            QStringLiteral("An SQLite file, or postgresql://user@host:port/name, whose password is "
                           "taken from ~/.pgpass or PGPASSWORD (default: %1).")
                .arg(Database::defaultLocation()),
            QStringLiteral("database"), Database::defaultLocation()};
}

/// The first argument that is neither an option nor the value of one.
QString firstWord(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.addOption(optionForDatabase());
    QStringList known;
    for (const Command& command : commands())
        for (const QCommandLineOption& option : command.options)
            if (!known.contains(option.names().constFirst())) {
                known += option.names();
                parser.addOption(option);
            }
    parser.parse(arguments);
    return parser.positionalArguments().value(0);
}

int runCommand(const Command& command, const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(command.description);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(command.options);
    parser.addOption(optionForDatabase());
    parser.addPositionalArgument(command.name, QString());
    if (!command.argument.isEmpty())
        parser.addPositionalArgument(command.argument, command.argumentHelp);
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all")))
        parser.showHelp();
    if (parser.positionalArguments().size() - 1 > command.mostArguments) {
        const QString unexpected = parser.positionalArguments().at(1 + command.mostArguments);
        if (Database::isAddress(unexpected)) // not repeated: there might be a password in it
            return fail(QStringLiteral("a database's address goes after --database"));
        return fail(QStringLiteral("unexpected argument \"%1\"").arg(unexpected));
    }
    return command.run(parser);
}
} // namespace

int commandline::run(const QStringList& arguments)
{
    const QString word = firstWord(arguments);
    for (const Command& command : commands())
        if (command.name == word)
            return runCommand(command, arguments);
    QTextStream out(stdout);
    if (!word.isEmpty())
        return fail(QStringLiteral("there is no command \"%1\"; see --help").arg(word));
    if (arguments.contains(QStringLiteral("--version")) ||
        arguments.contains(QStringLiteral("-v"))) {
        out << QCoreApplication::applicationName() << ' ' << QCoreApplication::applicationVersion()
            << Qt::endl;
        return 0;
    }
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h"))) {
        out << overview();
        return 0;
    }
    return fail(QStringLiteral("which command? See --help"));
}
