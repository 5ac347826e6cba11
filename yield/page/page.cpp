// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/parts.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

/// Here because the macro may not stand in a namespace.
static void makeResourcesAvailable()
{
    Q_INIT_RESOURCE(page);
}

namespace
{
using figuretext::count;
using figuretext::countOf;
using figuretext::percent;
using figuretext::share;

QString resource(const QString& name)
{
    makeResourcesAvailable();
    QFile file(":/yield/" + name);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

QRegularExpression expression(const QString& pattern)
{
    return QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption);
}

/// The page without its figures: what a word means stands in it once and is shown where the mouse
/// is over the word.
QString pageTemplate()
{
    QString page = resource("page.html");
    auto terms = expression("<dt>(.*?)</dt>\\s*<dd>(.*?)</dd>").globalMatch(page);
    while (terms.hasNext()) {
        const auto term = terms.next();
        page.replace(QString("title=\"%1\"").arg(term.captured(1)),
                     QString("title=\"%1\"").arg(term.captured(2).simplified()));
    }
    return page;
}

/// Which units the page is about, in words.
QString cohortText(const Report& report)
{
    const ReportRequest& request = report.request;
    QString text = "Units first tested";
    if (request.since.isValid() && request.since == request.until)
        text += " on " + request.since.toString(Qt::ISODate);
    else {
        if (request.since.isValid())
            text += " from " + request.since.toString(Qt::ISODate);
        if (request.until.isValid())
            text += " to " + request.until.toString(Qt::ISODate);
    }
    if (!request.since.isValid() && !request.until.isValid())
        text += " at any time";
    text += request.station.isEmpty() ? ", at all stations"
                                      : QString(", at station \"%1\"").arg(request.station);
    if (!request.without.isEmpty())
        text += QString(", without %1: %2 left out")
                    .arg(request.without.join(", "), figuretext::units(report.leftOut));
    return text + ". Made on " + request.now.toString("yyyy-MM-dd HH:mm") + '.';
}

QString emptyText(const Report& report)
{
    if (report.databaseIsEmpty)
        return "There are no attempts in the database yet. Import the stations' logs with "
               "\"zorvi_yield import\".";
    return report.total.units == 0 ? "There are no such units in the database; it has others."
                                   : QString();
}

/// The places of the page that hold a single text.
QMap<QString, QString> textsOf(const Report& report)
{
    const Tally& total = report.total;
    const FalseFailures& failures = report.falseFailures;
    return {
        {"cohort", cohortText(report)},
        {"empty", emptyText(report)},
        {"units", count(total.units)},
        {"attempts", count(total.attempts)},
        {"attemptsPerUnit",
         QString::number(1.0 * total.attempts / std::max(total.units, 1), 'f', 2)},
        {"firstPass", percent(total.passedFirst, total.units)},
        {"firstPassOf", countOf(total.passedFirst, total.units)},
        {"final", percent(total.passedLast, total.units)},
        {"finalOf", countOf(total.passedLast, total.units)},
        {"endedShare", percent(total.endedFirst, total.units)},
        {"endedOf", countOf(total.endedFirst, total.units)},
        {"falseShare", percent(failures.passed, failures.failed)},
        {"falseOf", countOf(failures.passed, failures.failed)},
        {"failed", count(failures.failed)},
        {"retested", share(failures.retested, failures.failed)},
        {"falseFailures", share(failures.passed, failures.failed)},
        {"ended", share(total.endedFirst, total.units)},
    };
}
} // namespace

bool page::write(const Report& report, QIODevice& output)
{
    QString page = pageTemplate();
    if (report.total.units == 0)
        page.remove(expression("<!--ifunits-->.*?<!--endunits-->"));
    const QMap<QString, QString> texts = textsOf(report);
    Parts parts = yieldParts();
    for (const Parts& more : {controlParts(), unitParts()})
        for (auto part = more.cbegin(); part != more.cend(); ++part)
            parts.insert(part.key(), part.value());

    Html html(output);
    int end = 0; // of what is written
    auto places = expression("<!--(.*?)-->").globalMatch(page);
    while (places.hasNext()) {
        const auto place = places.next();
        const QString name = place.captured(1);
        html.markup(page.mid(end, place.capturedStart() - end));
        end = place.capturedEnd();
        if (name == "style")
            html.markup(resource("page.css"));
        else if (parts.contains(name))
            parts.value(name)(html, report);
        else
            html.text(texts.value(name));
    }
    html.markup(page.mid(end));
    return html.isWhole();
}
