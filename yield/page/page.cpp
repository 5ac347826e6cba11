// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/page.h"

#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/html.h"
#include "yield/page/surface.h"
#include "yield/page/unitlists.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>

/// Here because the macro may not stand in a namespace.
static void makeStyleAvailable()
{
    Q_INIT_RESOURCE(page);
}

namespace
{
using figuretext::count;
using figuretext::percent;
using figuretext::share;

constexpr int mostParetoBars = 14;
constexpr int worstCount = 3;

QString style()
{
    makeStyleAvailable();
    QFile file(QStringLiteral(":/yield/page.css"));
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

/// Which units the page is about, in words.
QString cohortText(const ReportRequest& request)
{
    QString text = QStringLiteral("Units first tested");
    if (request.since.isValid() && request.since == request.until)
        text += QStringLiteral(" on ") + request.since.toString(Qt::ISODate);
    else {
        if (request.since.isValid())
            text += QStringLiteral(" from ") + request.since.toString(Qt::ISODate);
        if (request.until.isValid())
            text += QStringLiteral(" to ") + request.until.toString(Qt::ISODate);
    }
    if (!request.since.isValid() && !request.until.isValid())
        text += QStringLiteral(" at any time");
    return text + (request.station.isEmpty()
                       ? QStringLiteral(", at all stations")
                       : QStringLiteral(", at station \"%1\"").arg(request.station));
}

void writeTile(Html& html, const QString& name, const QString& figure, const QString& of)
{
    html.begin(QStringLiteral("div"), QStringLiteral("tile"));
    html.element(QStringLiteral("div"), name, QStringLiteral("name"));
    html.element(QStringLiteral("div"), figure, QStringLiteral("figure"));
    html.element(QStringLiteral("div"), of, QStringLiteral("of"));
    html.end();
}

void writeTotals(Html& html, const Tally& total)
{
    const auto ofUnits = [&](int part) {
        return QStringLiteral("%1 of %2").arg(count(part), figuretext::units(total.units));
    };
    html.begin(QStringLiteral("div"), QStringLiteral("tiles"));
    writeTile(html, QStringLiteral("Units"), count(total.units), QStringLiteral("serial numbers"));
    writeTile(html, QStringLiteral("Attempts"), count(total.attempts),
              QStringLiteral("%1 a unit").arg(1.0 * total.attempts / total.units, 0, 'f', 2));
    writeTile(html, QStringLiteral("First-pass yield"), percent(total.passedFirst, total.units),
              ofUnits(total.passedFirst));
    writeTile(html, QStringLiteral("Final yield"), percent(total.passedLast, total.units),
              ofUnits(total.passedLast));
    html.end();
}

void writeTimeline(Html& html, const Report& report)
{
    const Timeline timeline = timelineOf(report.days, report.total);
    html.beginSection(
        QStringLiteral("days"), QStringLiteral("By ") + timeline.unit,
        QStringLiteral("First-pass yield as dots, the number of units as bars, by the "
                       "%1 of the first attempt.")
            .arg(timeline.unit));
    chart::drawTimeline(html.xml, timeline);
    html.end();
}

void writeControlTable(Html& html, const Report& report, int first, int last)
{
    html.beginTable(
        {QStringLiteral("Control"), QStringLiteral("No."), QStringLiteral("#Missed by")});
    for (int c = first; c <= last; ++c) {
        const ControlMisses& control = report.controls.at(static_cast<std::size_t>(c));
        QString figure = QStringLiteral("never tested");
        if (control.units > 0)
            figure = share(control.missed, control.units);
        else if (c != roster::powerButton)
            figure = QStringLiteral("not tested here");
        html.begin(QStringLiteral("tr"));
        html.element(QStringLiteral("td"), controlnames::control(c));
        html.element(QStringLiteral("td"), QString::number(c));
        html.element(QStringLiteral("td"), figure, QStringLiteral("number"));
        html.end();
    }
    html.endTable();
}

void writeSurface(Html& html, const Report& report)
{
    html.beginSection(
        QStringLiteral("surface"), QStringLiteral("The control surface"),
        QStringLiteral("How many units missed a band of the control at the first attempt. The bold "
                       "number is the component's, as in the log."));
    surface::draw(html.xml, report);
    constexpr int middleButton = roster::firstButton + roster::buttonCount / 2;
    html.begin(QStringLiteral("div"), QStringLiteral("columns"));
    html.begin(QStringLiteral("div"));
    writeControlTable(html, report, roster::firstFader, roster::firstButton - 1);
    writeControlTable(html, report, roster::firstRotary, roster::lastComponent);
    html.end();
    writeControlTable(html, report, roster::firstButton, middleButton);
    writeControlTable(html, report, middleButton + 1, roster::firstRotary - 1);
    html.end();
    html.end();
}

/// The controls that some unit missed, most missed first.
QVector<int> missedControls(const std::array<ControlMisses, roster::componentCount>& controls)
{
    QVector<int> missed;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (controls.at(static_cast<std::size_t>(c)).missed > 0)
            missed.append(c);
    std::stable_sort(missed.begin(), missed.end(), [&](int a, int b) {
        return controls.at(static_cast<std::size_t>(a)).missed >
               controls.at(static_cast<std::size_t>(b)).missed;
    });
    return missed;
}

void writeWorst(Html& html, const Report& report, const QVector<int>& worst)
{
    html.begin(QStringLiteral("div"), QStringLiteral("worst"));
    for (const int c : worst) {
        const ControlMisses& control = report.controls.at(static_cast<std::size_t>(c));
        html.begin(QStringLiteral("div"));
        html.element(
            QStringLiteral("h3"),
            QStringLiteral("%1 (component %2)").arg(controlnames::control(c), QString::number(c)));
        html.element(QStringLiteral("p"),
                     QStringLiteral("Missed by ") + share(control.missed, control.units),
                     QStringLiteral("quiet"));
        chart::drawBands(html.xml, c, control);
        html.end();
    }
    html.end();
}

void writePareto(Html& html, const Report& report)
{
    const QVector<int> missed = missedControls(report.controls);
    if (missed.isEmpty()) {
        html.beginSection(QStringLiteral("pareto"), QStringLiteral("What was missed"),
                          QStringLiteral("Every first attempt was complete."));
        html.end();
        return;
    }
    html.beginSection(
        QStringLiteral("pareto"), QStringLiteral("What was missed"),
        QStringLiteral("Units that missed the control at the first attempt. The line adds up the "
                       "shares of all these misses. A run that was broken off counts as missing "
                       "every control after it: a log does not tell the two apart."));
    QVector<chart::ParetoBar> bars;
    int all = 0;
    for (const int c : missed) {
        const int units = report.controls.at(static_cast<std::size_t>(c)).missed;
        all += units;
        if (bars.size() < mostParetoBars)
            bars.append({controlnames::control(c), units});
    }
    chart::drawPareto(html.xml, bars, all);
    if (missed.size() > bars.size())
        html.element(QStringLiteral("p"),
                     QStringLiteral("And %1 more controls, all in the table above.")
                         .arg(missed.size() - bars.size()),
                     QStringLiteral("quiet"));
    html.end();

    html.beginSection(QStringLiteral("bands"), QStringLiteral("Which bands the worst three missed"),
                      QStringLiteral("How many units missed the band that begins at the value. A "
                                     "control that never reaches an end shows it at that end; a "
                                     "hole shows in between; a dead control shows everywhere."));
    writeWorst(html, report, missed.mid(0, worstCount));
    html.end();
}

/// The control that most units of a station missed, or a dash.
QString worstControl(const StationReport& station)
{
    const auto worst = std::max_element(station.missed.cbegin(), station.missed.cend());
    if (*worst == 0)
        return QStringLiteral("–");
    const auto componentNum = static_cast<int>(std::distance(station.missed.cbegin(), worst));
    return QStringLiteral("%1, %2").arg(controlnames::control(componentNum),
                                        figuretext::units(*worst));
}

void writeStations(Html& html, const Report& report)
{
    double axisBegin = 0.8;
    for (const StationReport& station : report.stations) {
        const auto interval = chart::yieldInterval(station.tally.passedFirst, station.tally.units);
        while (axisBegin > 0 && interval.low < axisBegin)
            axisBegin -= 0.2;
    }
    axisBegin = std::max(axisBegin, 0.0);
    html.beginSection(
        QStringLiteral("stations"), QStringLiteral("Stations side by side"),
        QStringLiteral("The units first tested at each station. The dot is the first-pass yield, "
                       "on a scale from %1 % to 100 %; the bar is where the true yield lies with a "
                       "confidence of 95 %: stations whose bars overlap widely do not differ for "
                       "certain.")
            .arg(qRound(100 * axisBegin)));
    html.beginTable({QStringLiteral("Station"), QStringLiteral("#Units"),
                     QStringLiteral("#Attempts"), QStringLiteral("First-pass yield"), QString(),
                     QStringLiteral("Final yield"), QStringLiteral("Most missed")});
    for (const StationReport& station : report.stations) {
        const Tally& tally = station.tally;
        html.begin(QStringLiteral("tr"));
        html.element(QStringLiteral("td"), station.name, QStringLiteral("name"));
        html.element(QStringLiteral("td"), count(tally.units), QStringLiteral("number"));
        html.element(QStringLiteral("td"), count(tally.attempts), QStringLiteral("number"));
        html.element(QStringLiteral("td"), share(tally.passedFirst, tally.units));
        html.begin(QStringLiteral("td"));
        chart::drawInterval(html.xml, tally.passedFirst, tally.units, axisBegin);
        html.end();
        html.element(QStringLiteral("td"), share(tally.passedLast, tally.units));
        html.element(QStringLiteral("td"), worstControl(station));
        html.end();
    }
    html.endTable();
    html.end();
}

void writeDefinitions(Html& html)
{
    const std::pair<QString, QString> definitions[] = {
        {QStringLiteral("Unit"), QStringLiteral("A serial number, as typed at the station.")},
        {QStringLiteral("Attempt"),
         QStringLiteral("One test of a unit that left a log with at least one band reached.")},
        {QStringLiteral("Complete"),
         QStringLiteral("Every band of every tested control was reached. Component 39, the power "
                        "button, never counts; component 18 counts at the stations that test "
                        "it.")},
        {QStringLiteral("First-pass yield"),
         QStringLiteral("Units whose first attempt, at whatever station, is complete, of all "
                        "units.")},
        {QStringLiteral("Final yield"),
         QStringLiteral("Units whose last attempt, at whatever station, is complete, of all "
                        "units.")},
        {QStringLiteral("Which units"),
         QStringLiteral("Those whose first attempt lies in the time and at the station that were "
                        "asked for. All their attempts count, later ones and those at other "
                        "stations too.")},
    };
    html.beginSection(QStringLiteral("definitions"), QStringLiteral("What the words mean"));
    html.begin(QStringLiteral("dl"));
    for (const auto& [word, meaning] : definitions) {
        html.element(QStringLiteral("dt"), word);
        html.element(QStringLiteral("dd"), meaning);
    }
    html.end();
    html.end();
}
} // namespace

bool page::write(const Report& report, QIODevice& output)
{
    Html html(output, QStringLiteral("Zorvi assembly test: yield"), style());
    html.element(QStringLiteral("h1"), QStringLiteral("Zorvi assembly test: yield"));
    html.element(QStringLiteral("p"),
                 QStringLiteral("%1. Made on %2.")
                     .arg(cohortText(report.request), QDateTime::currentDateTime().toString(
                                                          QStringLiteral("yyyy-MM-dd HH:mm"))),
                 QStringLiteral("quiet"));
    if (report.total.units == 0) {
        html.element(
            QStringLiteral("p"),
            report.databaseIsEmpty
                ? QStringLiteral("There are no attempts in the database yet. Import the "
                                 "stations' logs with \"zorvi_yield import\".")
                : QStringLiteral("There are no such units in the database; it has others."),
            QStringLiteral("empty"));
        return html.finish();
    }
    writeTotals(html, report.total);
    writeTimeline(html, report);
    writeSurface(html, report);
    writePareto(html, report);
    writeStations(html, report);
    unitlists::writeOpen(html, report);
    unitlists::writeRepeated(html, report);
    writeDefinitions(html);
    return html.finish();
}
