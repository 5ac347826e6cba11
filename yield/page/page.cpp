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
using Kind = Html::Column::Kind;

constexpr int mostParetoBars = 14;
constexpr int worstCount = 3;

QString style()
{
    makeStyleAvailable();
    QFile file(":/yield/page.css");
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

/// Which units the page is about, in words.
QString cohortText(const ReportRequest& request)
{
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
    return text + (request.station.isEmpty() ? ", at all stations"
                                             : QString(", at station \"%1\"").arg(request.station));
}

void writeTile(Html& html, const QString& name, const QString& figure, const QString& of)
{
    const auto tile = html.open("div", "tile");
    html.element("div", name, "name");
    html.element("div", figure, "figure");
    html.element("div", of, "of");
}

void writeTotals(Html& html, const Tally& total)
{
    const auto ofUnits = [&](int part) {
        return QString("%1 of %2").arg(count(part), figuretext::units(total.units));
    };
    const auto tiles = html.open("div", "tiles");
    writeTile(html, "Units", count(total.units), "serial numbers");
    writeTile(html, "Attempts", count(total.attempts),
              QString("%1 a unit").arg(1.0 * total.attempts / total.units, 0, 'f', 2));
    writeTile(html, "First-pass yield", percent(total.passedFirst, total.units),
              ofUnits(total.passedFirst));
    writeTile(html, "Final yield", percent(total.passedLast, total.units),
              ofUnits(total.passedLast));
}

void writeTimeline(Html& html, const Report& report)
{
    const Timeline timeline = timelineOf(report.days, report.total);
    const auto section =
        html.section("days", "By " + timeline.unit,
                     QString("First-pass yield as dots, the number of units as bars, by the "
                             "%1 of the first attempt.")
                         .arg(timeline.unit));
    chart::drawTimeline(html, timeline);
}

void writeControlTable(Html& html, const Report& report, int first, int last)
{
    const auto table = html.table({{"Control"}, {"No."}, {"Missed by", Kind::Number}});
    for (int c = first; c <= last; ++c) {
        const ControlMisses& control = report.controls.at(static_cast<std::size_t>(c));
        QString figure = "never tested";
        if (control.units > 0)
            figure = share(control.missed, control.units);
        else if (c != roster::powerButton)
            figure = "not tested here";
        const auto row = html.row();
        html.cell(controlnames::control(c));
        html.cell(QString::number(c));
        html.number(figure);
    }
}

void writeSurface(Html& html, const Report& report)
{
    const auto section =
        html.section("surface", "The control surface",
                     "How many units missed a band of the control at the first attempt. The bold "
                     "number is the component's, as in the log.");
    surface::draw(html, report);
    constexpr int middleButton = roster::firstButton + roster::buttonCount / 2;
    const auto columns = html.open("div", "columns");
    {
        const auto column = html.open("div");
        writeControlTable(html, report, roster::firstFader, roster::firstButton - 1);
        writeControlTable(html, report, roster::firstRotary, roster::lastComponent);
    }
    writeControlTable(html, report, roster::firstButton, middleButton);
    writeControlTable(html, report, middleButton + 1, roster::firstRotary - 1);
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

void writePareto(Html& html, const Report& report)
{
    const QVector<int> missed = missedControls(report.controls);
    if (missed.isEmpty()) {
        const auto section =
            html.section("pareto", "What was missed", "Every first attempt was complete.");
        return;
    }
    const auto section =
        html.section("pareto", "What was missed",
                     "Units that missed the control at the first attempt. The line adds up the "
                     "shares of all these misses. A run that was broken off counts as missing "
                     "every control after it: a log does not tell the two apart.");
    QVector<chart::ParetoBar> bars;
    int all = 0;
    for (const int c : missed) {
        const int units = report.controls.at(static_cast<std::size_t>(c)).missed;
        all += units;
        if (bars.size() < mostParetoBars)
            bars.append({controlnames::control(c), units});
    }
    chart::drawPareto(html, bars, all);
    if (missed.size() > bars.size())
        html.element("p",
                     QString("And %1 more controls, all in the table above.")
                         .arg(missed.size() - bars.size()),
                     "quiet");
}

/// The bands of the controls that most units missed.
void writeWorst(Html& html, const Report& report)
{
    const QVector<int> worst = missedControls(report.controls).mid(0, worstCount);
    if (worst.isEmpty())
        return;
    const auto section = html.section("bands", "Which bands the worst three missed",
                                      "How many units missed the band that begins at the value. A "
                                      "control that never reaches an end shows it at that end; a "
                                      "hole shows in between; a dead control shows everywhere.");
    const auto worstThree = html.open("div", "worst");
    for (const int c : worst) {
        const ControlMisses& control = report.controls.at(static_cast<std::size_t>(c));
        const auto box = html.open("div");
        html.element(
            "h3", QString("%1 (component %2)").arg(controlnames::control(c), QString::number(c)));
        html.element("p", "Missed by " + share(control.missed, control.units), "quiet");
        chart::drawBands(html, c, control);
    }
}

/// The control that most units of a station missed, or a dash.
QString worstControl(const StationReport& station)
{
    const auto worst = std::max_element(station.missed.cbegin(), station.missed.cend());
    if (*worst == 0)
        return "–";
    const auto componentNum = static_cast<int>(std::distance(station.missed.cbegin(), worst));
    return QString("%1, %2").arg(controlnames::control(componentNum), figuretext::units(*worst));
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
    const auto section = html.section(
        "stations", "Stations side by side",
        QString("The units first tested at each station. The dot is the first-pass yield, "
                "on a scale from %1 % to 100 %; the bar is where the true yield lies with a "
                "confidence of 95 %: stations whose bars overlap widely do not differ for "
                "certain.")
            .arg(qRound(100 * axisBegin)));
    const auto table = html.table({{"Station"},
                                   {"Units", Kind::Number},
                                   {"Attempts", Kind::Number},
                                   {"First-pass yield"},
                                   {"Drawn"},
                                   {"Final yield"},
                                   {"Most missed"}});
    for (const StationReport& station : report.stations) {
        const Tally& tally = station.tally;
        const auto row = html.row();
        html.cell(station.name, "name");
        html.number(count(tally.units));
        html.number(count(tally.attempts));
        html.cell(share(tally.passedFirst, tally.units));
        {
            const auto cell = html.open("td");
            chart::drawInterval(html, tally.passedFirst, tally.units, axisBegin);
        }
        html.cell(share(tally.passedLast, tally.units));
        html.cell(worstControl(station));
    }
}

void writeDefinitions(Html& html)
{
    const std::pair<QString, QString> definitions[] = {
        {"Unit", "A serial number, as typed at the station."},
        {"Attempt", "One test of a unit that left a log with at least one band reached."},
        {"Complete", "Every band of every tested control was reached. Component 39, the power "
                     "button, never counts; component 18 counts at the stations that test "
                     "it."},
        {"First-pass yield", "Units whose first attempt, at whatever station, is complete, of all "
                             "units."},
        {"Final yield", "Units whose last attempt, at whatever station, is complete, of all "
                        "units."},
        {"Which units", "Those whose first attempt lies in the time and at the station that were "
                        "asked for. All their attempts count, later ones and those at other "
                        "stations too."},
    };
    const auto section = html.section("definitions", "What the words mean");
    const auto list = html.open("dl");
    for (const auto& [word, meaning] : definitions) {
        html.element("dt", word);
        html.element("dd", meaning);
    }
}
} // namespace

bool page::write(const Report& report, QIODevice& output)
{
    Html html(output, "Zorvi assembly test: yield", style());
    html.element("h1", "Zorvi assembly test: yield");
    html.element("p",
                 QString("%1. Made on %2.")
                     .arg(cohortText(report.request),
                          QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm")),
                 "quiet");
    if (report.total.units == 0) {
        html.element("p",
                     report.databaseIsEmpty
                         ? "There are no attempts in the database yet. Import the "
                           "stations' logs with \"zorvi_yield import\"."
                         : "There are no such units in the database; it has others.",
                     "empty");
        return html.finish();
    }
    writeTotals(html, report.total);
    writeTimeline(html, report);
    writeSurface(html, report);
    writePareto(html, report);
    writeWorst(html, report);
    writeStations(html, report);
    unitlists::writeOpen(html, report);
    unitlists::writeRepeated(html, report);
    writeDefinitions(html);
    return html.finish();
}
