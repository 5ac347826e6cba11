// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/logs/messages.h"
#include "yield/store/attemptreader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
attemptrules::Outcome outcomeOf(const Attempt& attempt)
{
    return attemptrules::outcomeOf(attempt.marks, attempt.tests18);
}

/// When, where, and the result.
QString line(const Attempt& attempt)
{
    const auto outcome = outcomeOf(attempt);
    QString result = outcome.hasPassed() ? "passed" : "failed";
    if (outcome.abortedAt)
        result = "aborted at " + controlnames::control(*outcome.abortedAt);
    if (!outcome.missed.empty())
        result += ", missed " + controlnames::missed(outcome.missed).join("; ");
    if (!attempt.startedAt.isEmpty())
        result += ", started " + QString(attempt.startedAt).replace('T', ' ');
    return QString("%1  %2  %3")
        .arg(QString(attempt.testedAt).replace('T', ' '), printableText(attempt.station), result);
}

/// A text that a spreadsheet would run as a formula gets an apostrophe before it.
QByteArray csvText(QString text)
{
    if (!text.isEmpty() && QString("=+-@\t\r\n").contains(text[0]))
        text.prepend('\'');
    return '"' + text.replace('"', "\"\"").toUtf8() + '"';
}

/// "3: 0 1; 18: 0": each component that missed bands with the bands.
QString csvBands(const std::vector<bandmarks::Band>& bands)
{
    QMap<int, QString> controls;
    for (const auto& missed : bands)
        controls[missed.componentNum] += ' ' + QString::number(missed.band);
    QStringList texts;
    for (auto control = controls.cbegin(); control != controls.cend(); ++control)
        texts << QString::number(control.key()) + ':' + control.value();
    return texts.join("; ");
}

QByteArray csv(const Attempt& attempt)
{
    const auto outcome = outcomeOf(attempt);
    return csvText(attempt.station) + ',' + csvText(attempt.serial) + ',' +
           attempt.testedAt.toLatin1() + ',' + (outcome.hasPassed() ? '1' : '0') + ',' +
           csvText(csvBands(outcome.missed)) + ',' +
           (outcome.abortedAt ? QByteArray::number(*outcome.abortedAt) : "") + ',' +
           attempt.startedAt.toLatin1() + "\r\n";
}

QByteArray json(const Attempt& attempt)
{
    const auto outcome = outcomeOf(attempt);
    QJsonArray missed;
    for (const auto& band : outcome.missed)
        missed.append(QJsonObject{{"component", band.componentNum}, {"band", band.band}});
    const QJsonObject object{
        {"station", attempt.station},
        {"serial", attempt.serial},
        {"tested_at", attempt.testedAt},
        {"started_at", attempt.startedAt.isEmpty() ? QJsonValue() : QJsonValue(attempt.startedAt)},
        {"passed", outcome.hasPassed()},
        {"missed_bands", missed},
        {"aborted_component", outcome.abortedAt ? QJsonValue(*outcome.abortedAt) : QJsonValue()}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

ExitStatus exportAttempts(const QCommandLineParser& parser)
{
    const QString format = parser.value("format");
    const bool isJson = format == "json";
    if (!isJson && format != "csv")
        command::fail(QString("--format takes csv or json, not \"%1\"").arg(format));
    Database database(parser.value("database"), Database::Access::Read);
    // Written when it is whole: a reader that takes its time must not keep others from importing.
    QByteArrayList records;
    attemptreader::forEachUnit(database, [&](const auto& attempts) {
        for (const Attempt& attempt : attempts)
            records << (isJson ? json(attempt) : csv(attempt));
    });
    const QByteArray heading =
        "station,serial,tested_at,passed,missed_bands,aborted_component,started_at\r\n";
    command::writeFile("-", isJson ? '[' + records.join(",\n") + "]\n" : heading + records.join());
    return ExitStatus::Success;
}

ExitStatus showUnit(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().size() != 1)
        command::fail("unit takes one SERIAL");
    const QString serial = parser.positionalArguments().constFirst();
    Database database(parser.value("database"), Database::Access::Read);
    std::vector<Attempt> attempts;
    attemptreader::forEachUnit(
        database, [&](const auto& unit) { attempts = unit; }, serial);
    for (const Attempt& attempt : attempts)
        messages::print(line(attempt));
    if (attempts.empty())
        messages::warn(
            QString("no attempt of a unit with the serial \"%1\"").arg(printableText(serial)));
    const bool hasPassed = !attempts.empty() && outcomeOf(attempts.back()).hasPassed();
    return hasPassed ? ExitStatus::Success : ExitStatus::ProblemsFound;
}
} // namespace

Command exportCommand()
{
    return {"export",
            "Writes one record for each attempt to standard output.",
            exportAttempts,
            {{"format", "csv or json.", "csv|json"}}};
}

Command unitCommand()
{
    return {"unit",
            "Lists every attempt of a unit with its result. A serial that begins with a dash goes "
            "after \"--\". Exit status 1 if the last attempt did not pass.",
            showUnit,
            {},
            "SERIAL"};
}
