// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/panelrun.h"

#include "panels/makepanel.h"
#include "simulator/unitscript.h"
#include "yield/logs/stationlog.h"

PanelRun::PanelRun()
{
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        panels.push_back(makePanel(c));
}

PanelRun::~PanelRun() = default;

testlog::Coverage PanelRun::coverageOf(const UnitFault& unit, bool isTarvekStation)
{
    for (const auto& panel : panels)
        panel->slot_Init();
    for (const int armed : unitscript::runOrder(isTarvekStation)) {
        for (const auto& panel : panels)
            panel->slot_QueueComponent(armed);
        for (const UnitStep& step : unitfault::scriptFor(armed, unit))
            if (step.action == UnitStep::Action::Send)
                for (const auto& panel : panels)
                    panel->slot_ReceiveMIDI(step.message);
    }
    testlog::Coverage coverage;
    for (std::size_t c = 0; c < panels.size(); ++c)
        coverage.at(c) = panels.at(c)->coverage();
    return coverage;
}

QString PanelRun::differences(const QByteArray& log, const UnitFault& unit, bool isTarvekStation)
{
    BandMarks marks;
    try {
        marks = stationlog::read(log).marks;
    } catch (const NotALog& error) {
        return QString::fromUtf8(error.what());
    }
    const testlog::Coverage expected = coverageOf(unit, isTarvekStation);
    QStringList found;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        QStringList bands;
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            if (marks[bandmarks::markIndex(c, band)] !=
                (expected.at(static_cast<std::size_t>(c)).at(band).covered != 0.0F))
                bands << QString::number(band);
        if (!bands.isEmpty())
            found << QStringLiteral("component %1 differs in band %2")
                         .arg(QString::number(c), bands.join(QLatin1Char(' ')));
    }
    return found.join(QStringLiteral("; "));
}
