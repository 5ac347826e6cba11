// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/attempttext.h"

#include "yield/logs/attemptrules.h"
#include "yield/logs/controlnames.h"
#include "yield/logs/printabletext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

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
            text += (text.isEmpty() ? "" : "; ") + QString::number(componentNum) + ':';
        }
        text += ' ' + QString::number(missed.band);
    }
    return text;
}

QByteArray csvText(QString text)
{
    static const QString beginsFormula = "=+-@\t\r\n";
    if (!text.isEmpty() && beginsFormula.contains(text[0]))
        text.prepend('\'');
    text.replace('"', "\"\"");
    return '"' + text.toUtf8() + '"';
}
} // namespace

QString attempttext::line(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QStringList words;
    if (outcome.endedAt)
        words << "ended early at " + controlnames::control(*outcome.endedAt);
    if (!outcome.missed.empty())
        words << "missed " + controlnames::missed(outcome.missed).join("; ");
    QString when = attempt.testedAt;
    when.replace('T', ' ');
    return QString("%1  %2  %3")
        .arg(when, printableText(attempt.station),
             outcome.isComplete() ? "complete" : words.join(", "));
}

QByteArray attempttext::csvHead()
{
    return "station,serial,tested_at,complete,missed_bands,ended_at\r\n";
}

QByteArray attempttext::csv(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    return csvText(attempt.station) + ',' + csvText(attempt.serial) + ',' +
           attempt.testedAt.toLatin1() + ',' + (outcome.isComplete() ? '1' : '0') + ',' +
           csvText(missedBands(outcome.missed)) + ',' +
           (outcome.endedAt ? QByteArray::number(*outcome.endedAt) : "") + "\r\n";
}

QByteArray attempttext::json(const Attempt& attempt)
{
    const auto outcome = attemptrules::outcomeOf(attempt.marks, attempt.tests18);
    QJsonArray missed;
    for (const auto& band : outcome.missed)
        missed.append(QJsonObject{{"component", band.componentNum}, {"band", band.band}});
    return QJsonDocument(QJsonObject{{"station", attempt.station},
                                     {"serial", attempt.serial},
                                     {"tested_at", attempt.testedAt},
                                     {"complete", outcome.isComplete()},
                                     {"missed_bands", missed},
                                     {"ended_at", outcome.endedAt ? QJsonValue(*outcome.endedAt)
                                                                  : QJsonValue()}})
        .toJson(QJsonDocument::Compact);
}
