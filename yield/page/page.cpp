// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/figures/timeline.h"
#include "yield/page/chart.h"
#include "yield/page/markup.h"
#include "yield/page/tables.h"

#include <QFile>

using cells::unitsText;
using html::element;
using html::paragraph;

namespace
{
QString resource(const QString& name)
{
    QFile file(":/yield/" + name);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

/// A resource with the figures in their places.
QString filled(const QString& name, const QStringList& figures)
{
    const QStringList frame = resource(name).split("<!-- figures -->");
    Q_ASSERT(frame.size() == figures.size() + 1);
    QString content = frame.first();
    for (int i = 0; i < figures.size(); ++i)
        content += figures.at(i) + frame.at(i + 1);
    return content;
}

/// Which units the page is about.
QString scope(const Report& report)
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
        excluded = ", excluding " + request.exclude.join(", ") + ": " + unitsText(report.excluded) +
                   " excluded";
    return paragraph("Units first tested" + time + ", " + place + excluded + ". Made on " +
                     request.now.toString("yyyy-MM-dd HH:mm") + '.');
}

QStringList totals(const Report& report)
{
    QStringList tiles;
    for (const auto& [key, cell] : tables::totals(report))
        tiles << element("div", html::text(cell.text), "figure") +
                     element("div", html::text(cell.basis), "basis");
    return tiles;
}

QStringList trend(const Report& report)
{
    QString warning;
    if (report.implausibleDates > 0)
        warning = unitsText(report.implausibleDates) +
                  " with a first attempt before the year 2000 or more than a day after this page "
                  "was made: the clock of a station is wrong. They count everywhere but here.";
    return {paragraph(warning, "bad"), chart::trend(timelineOf(report.days), report.total),
            html::rows(tables::trend(report))};
}

QString bands(const Report& report)
{
    QString charts;
    for (const ControlFailures& control : report.topControls())
        charts += element("div",
                          element("h3", cells::control(control.componentNum).text) +
                              paragraph("Failed units: " + cells::failedUnits(control).fullText()) +
                              chart::bands(control));
    return charts;
}

QString sections(const Report& report)
{
    const Cell aborted = cells::share(report.total.abortedFirst, report.total.units);
    const Cell falseFailures = cells::share(report.falseFailures, report.failedAttempts);
    QStringList figures{unitsText(report.total.units - report.total.passedLast),
                        html::rows(tables::notPassed(report))};
    figures << totals(report) << trend(report);
    figures << chart::stations(report.stations, report.total)
            << html::rows(tables::stations(report));
    figures << chart::surface(report.controls) << html::rows(tables::controls(report));
    figures << chart::pareto(report) << html::rows(tables::pareto(report));
    figures << bands(report) << html::rows(tables::bands(report));
    figures << aborted.fullText() << html::rows(tables::aborted(report));
    figures << html::rows(tables::attemptsByNumber(report)) << falseFailures.fullText();
    figures << unitsText(report.retestedUnitCount) << html::rows(tables::retested(report));
    return filled("sections.html", figures);
}
} // namespace

QByteArray reportPage(const Report& report)
{
    Q_INIT_RESOURCE(page);
    const bool isEmpty = report.total.units == 0;
    const QString links = isEmpty ? QString() : resource("nav.html");
    const QString message = paragraph("There are no such units in the database. \"zorvi_yield "
                                      "import\" imports the stations' logs.",
                                      "empty");
    return filled("page.html",
                  {resource("page.css"), scope(report) + links,
                   html::rows(tables::lastLogs(report)), html::rows(tables::recentDays(report)),
                   isEmpty ? message : sections(report)})
        .toUtf8();
}
