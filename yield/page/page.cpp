// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/page/figuretext.h"
#include "yield/page/markup.h"
#include "yield/page/parts.h"

#include <QFile>
#include <QRegularExpression>

/// Not in a namespace, where Q_INIT_RESOURCE may not stand.
static QString resource(const QString& name)
{
    Q_INIT_RESOURCE(page);
    QFile file(":/yield/" + name);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

namespace
{
using figuretext::count;
using figuretext::percent;

/// The page without its figures: what a word means stands in it once and is shown where the mouse
/// is over the word.
QString pageTemplate()
{
    QString page = resource("page.html");
    auto terms = QRegularExpression("(?s)<dt>(.*?)</dt>\\s*<dd>(.*?)</dd>").globalMatch(page);
    while (terms.hasNext()) {
        const auto term = terms.next();
        page.replace(QString("title=\"%1\"").arg(term.captured(1)),
                     QString("title=\"%1\"").arg(term.captured(2).simplified()));
    }
    return page;
}

/// The places of the page that hold a single text.
Parts textsOf(const Report& report)
{
    const ReportRequest& request = report.request;
    const Tally& total = report.total;
    const FalseFailures& failures = report.falseFailures;
    return {
        {"style", resource("page.css")},
        {"since", request.since.toString(Qt::ISODate)},
        {"until", request.until.toString(Qt::ISODate)},
        {"station", html::text(request.station)},
        {"without", html::text(request.without.join(", "))},
        {"leftOut", figuretext::units(report.leftOut)},
        {"madeAt", request.now.toString("yyyy-MM-dd HH:mm")},
        {"units", figuretext::ifAny(total.units, count)},
        {"attempts", count(total.attempts)},
        {"firstPass", percent(total.passedFirst, total.units)},
        {"passedFirst", count(total.passedFirst)},
        {"final", percent(total.passedLast, total.units)},
        {"passedLast", count(total.passedLast)},
        {"endedShare", percent(total.endedFirst, total.units)},
        {"endedFirst", count(total.endedFirst)},
        {"falseShare", percent(failures.passedNext, failures.failed)},
        {"passedAgain", count(failures.passedNext)},
        {"failed", count(failures.failed)},
    };
}
} // namespace

bool page::write(const Report& report, QIODevice& output)
{
    Parts parts = textsOf(report);
    for (const Parts& some : {yieldParts(report), controlParts(report)})
        parts.insert(some);
    QString page = pageTemplate();
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QString absent = part->isEmpty() ? "if" : "unless";
        page.remove(QRegularExpression(
            QString("(?s)<!--%1 %2-->.*?<!--end %2-->").arg(absent, part.key())));
    }
    for (auto part = parts.cbegin(); part != parts.cend(); ++part)
        page.replace("<!--" + part.key() + "-->", part.value());
    page.remove(QRegularExpression("(?s)<!--.*?-->"));
    const QByteArray bytes = page.toUtf8();
    return output.write(bytes) == bytes.size();
}
