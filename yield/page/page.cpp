// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/figures/timeline.h"
#include "yield/page/chart.h"
#include "yield/page/markup.h"
#include "yield/page/tables.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QResource>

using cells::unitsText;
using html::element;
using html::paragraph;

namespace
{
QString resource(const QString& name)
{
    return QString::fromUtf8(QResource(":/yield/" + name).uncompressedData());
}

QString scope(const Report& report)
{
    const ReportRequest& request = report.request;
    QStringList time;
    if (request.since.isValid())
        time << "from " + request.since.toString(Qt::ISODate);
    if (request.until.isValid())
        time << "to " + request.until.toString(Qt::ISODate);
    if (time.isEmpty())
        time << "at any time";
    const QString place =
        request.station.isEmpty() ? "at all stations" : "at station \"" + request.station + '"';
    QString excluded;
    if (!request.exclude.isEmpty())
        excluded = ", excluding " + request.exclude.join(", ") + ": " + unitsText(report.excluded) +
                   " excluded";
    return paragraph("Units first tested " + time.join(' ') + ", " + place + excluded +
                     ". Made on " + request.now.toString("yyyy-MM-dd HH:mm") + '.');
}

/// The attribute of an element that is for some reports only.
QString hiddenUnless(bool isShown)
{
    return isShown ? "" : " hidden='hidden'";
}

QString rowsMarkup(const Rows& rows)
{
    if (rows.isEmpty())
        return element("tr", element("td", "none"));
    QString body;
    for (const Row& row : rows) {
        QString content;
        for (const auto& [key, cell] : row)
            content += element("td", html::text(cell.fullText()), cell.classes);
        body += element("tr", content);
    }
    return body;
}

QString bandCharts(const Report& report)
{
    QString charts;
    for (const ControlFailures& control : report.topControls())
        charts +=
            element("div", element("h3", cells::control(control.componentNum).text) +
                               paragraph("Failed units: " +
                                         cells::share(control.failed, control.units).fullText()) +
                               chart::bands(control));
    return charts.isEmpty() ? paragraph("None.") : charts;
}

/// The figures as markup, by the names of their places in page.html.
QMap<QString, QString> figuresOf(const Report& report)
{
    const Tally& total = report.total;
    QMap<QString, QString> figures{
        {"style", resource("page.css")},
        {"scope", scope(report)},
        {"unless empty", hiddenUnless(total.units == 0)},
        {"not passed", unitsText(total.units - total.passedLast)},
        {"unless implausible dates", hiddenUnless(report.implausibleDates > 0)},
        {"implausible dates", unitsText(report.implausibleDates)},
        {"trend chart", chart::trend(report)},
        {"stations chart", chart::stations(report)},
        {"heat map", chart::surface(report)},
        {"pareto chart", chart::pareto(report)},
        {"bands charts", bandCharts(report)},
        {"aborted", cells::share(total.abortedFirst, total.units).fullText()},
        {"false failures", cells::share(report.falseFailures, report.failedAttempts).fullText()},
        {"retested", unitsText(report.retestedUnitCount)}};
    auto tables = tables::all(report);
    const Row totals = tables.take("totals").first();
    for (const auto& [key, cell] : totals)
        figures["totals." + key] = element("div", html::text(cell.text), "figure") +
                                   element("div", html::text(cell.basis), "basis");
    for (auto table = tables.cbegin(); table != tables.cend(); ++table)
        figures[table.key() + " rows"] = rowsMarkup(*table);
    return figures;
}

QJsonObject objectOf(const Row& row)
{
    QJsonObject object;
    for (const auto& [key, cell] : row)
        object[key] = cell.value;
    return object;
}

QJsonValue textOrNull(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}
} // namespace

QByteArray reportPage(const Report& report)
{
    Q_INIT_RESOURCE(page);
    QString page = resource("page.html");
    const auto figures = figuresOf(report);
    for (auto figure = figures.cbegin(); figure != figures.cend(); ++figure) {
        const QString place = "<!-- " + figure.key() + " -->";
        if (page.count(place) != 1)
            qFatal("page.html has not one place for %s", qPrintable(figure.key()));
        page.replace(place, *figure);
    }
    return page.toUtf8();
}

QByteArray reportJson(const Report& report)
{
    const ReportRequest& request = report.request;
    const QJsonObject requestObject{{"made_at", request.now.toString("yyyy-MM-ddTHH:mm:ss")},
                                    {"since", textOrNull(request.since.toString(Qt::ISODate))},
                                    {"until", textOrNull(request.until.toString(Qt::ISODate))},
                                    {"station", textOrNull(request.station)},
                                    {"exclude", QJsonArray::fromStringList(request.exclude)},
                                    {"excluded_units", report.excluded}};
    QJsonObject object{{"request", requestObject},
                       {"implausible_dates", report.implausibleDates},
                       {"period", textOrNull(timelineOf(report.days).period)},
                       {"retested_units", report.retestedUnitCount}};
    auto tables = tables::all(report);
    object["totals"] = objectOf(tables.take("totals").first());
    for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
        QJsonArray rows;
        for (const Row& row : *table)
            rows.append(objectOf(row));
        object[table.key()] = rows;
    }
    return QJsonDocument(object).toJson();
}
