// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/page/cells.h"
#include "yield/page/markup.h"
#include "yield/page/sections.h"

#include <QFile>

/// Outside the namespace: Q_INIT_RESOURCE requires it.
static QString styleSheet()
{
    Q_INIT_RESOURCE(page);
    QFile file(":/yield/page.css");
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

namespace
{
/// Which units the page is about.
QString scopeText(const Report& report)
{
    const ReportRequest& request = report.request;
    QString time;
    if (request.since.isValid())
        time += " from " + request.since.toString(Qt::ISODate);
    if (request.until.isValid())
        time += " to " + request.until.toString(Qt::ISODate);
    if (time.isEmpty())
        time = " at any time";
    const QString place =
        request.station.isEmpty() ? "at all stations" : "at station \"" + request.station + '"';
    QString excluded;
    if (!request.exclude.isEmpty())
        excluded = ", excluding " + request.exclude.join(", ") + ": " +
                   cells::unitsText(report.excluded) + " excluded";
    return "Units first tested" + time + ", " + place + excluded + ". Made on " +
           request.now.toString("yyyy-MM-dd HH:mm") + '.';
}

QString body(const Report& report)
{
    QString links;
    QString content;
    for (const Section& section : sectionsOf(report)) {
        links += html::element("a", html::text(section.link), {},
                               html::attribute("href", '#' + section.id));
        content += html::element("section",
                                 html::element("h2", html::text(section.heading)) + section.content,
                                 {}, html::attribute("id", section.id));
    }
    if (report.total.units == 0) {
        links.clear();
        content += html::paragraph("There are no such units in the database. \"zorvi_yield "
                                   "import\" imports the stations' logs.",
                                   "empty");
    }
    const QString header =
        html::element("h1", "Zorvi assembly test: yield") + html::paragraph(scopeText(report)) +
        html::element("nav", links, {}, html::attribute("aria-label", "Sections"));
    return html::element("header", header) + html::element("main", content);
}
} // namespace

QByteArray reportPage(const Report& report)
{
    const QString head = "\n<meta charset=\"utf-8\" />"
                         "\n<meta name=\"viewport\" content=\"width=device-width\" />" +
                         html::element("title", "Zorvi assembly test: yield") +
                         html::element("style", styleSheet());
    const QString document =
        html::element("html", html::element("head", head) + html::element("body", body(report)), {},
                      html::attribute("lang", "en"));
    return ("<!DOCTYPE html>" + document + '\n').toUtf8();
}
