// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/attempttext.h"

#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/logs/printabletext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QVector>

namespace
{
/// "3: 0 1; 18: 0": each component that missed bands with the bands.
QString missedBands(const std::vector<bandmarks::Band>& bands)
{
    QString text;
    int componentNum = -1;
    for (const auto& missed : bands) {
        if (missed.componentNum != componentNum) {
            componentNum = missed.componentNum;
            text += (text.isEmpty() ? QString() : QStringLiteral("; ")) +
                    QString::number(componentNum) + QLatin1Char(':');
        }
        text += QLatin1Char(' ') + QString::number(missed.band);
    }
    return text;
}

QByteArray csvText(QString text)
{
    static const QString beginsFormula = QStringLiteral("=+-@\t\r\n");
    if (!text.isEmpty() && beginsFormula.contains(text[0]))
        text.prepend(QLatin1Char('\''));
    text.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return '"' + text.toUtf8() + '"';
}
} // namespace

QString attempttext::line(const Attempt& attempt)
{
    QMap<int, QVector<int>> missed;
    for (const auto& band : attemptrules::outcomeOf(attempt.marks, attempt.tests18).missed)
        missed[band.componentNum].append(band.band);
    QStringList words;
    for (auto i = missed.cbegin(); i != missed.cend(); ++i)
        words << controlnames::control(i.key()) + QStringLiteral(": ") +
                     controlnames::bands(i.key(), i.value());
    QString when = attempt.testedAt;
    when.replace(QLatin1Char('T'), QLatin1Char(' '));
    return QStringLiteral("%1  %2  %3")
        .arg(when, printableText(attempt.station),
             words.isEmpty() ? QStringLiteral("complete")
                             : QStringLiteral("missed ") + words.join(QStringLiteral("; ")));
}

QByteArray attempttext::csvHead()
{
    return "station,serial,tested_at,complete,missed_bands\r\n";
}

QByteArray attempttext::csv(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    return csvText(attempt.station) + ',' + csvText(attempt.serial) + ',' +
           attempt.testedAt.toLatin1() + ',' + (outcome.isComplete() ? '1' : '0') + ',' +
           csvText(missedBands(outcome.missed)) + "\r\n";
}

QByteArray attempttext::json(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QJsonArray missed;
    for (const auto& band : outcome.missed)
        missed.append(QJsonObject{{QStringLiteral("component"), band.componentNum},
                                  {QStringLiteral("band"), band.band}});
    return QJsonDocument(QJsonObject{{QStringLiteral("station"), attempt.station},
                                     {QStringLiteral("serial"), attempt.serial},
                                     {QStringLiteral("tested_at"), attempt.testedAt},
                                     {QStringLiteral("complete"), outcome.isComplete()},
                                     {QStringLiteral("missed_bands"), missed}})
        .toJson(QJsonDocument::Compact);
}
