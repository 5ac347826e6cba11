// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/bare.h"
#include "benchmarks/row.h"
#include "benchmarks/shown.h"
#include "panels/componentpanel.h"
#include "simulator/unitscript.h"

namespace
{
/// A style sheet of a widget in a panel that a reset has to set.
struct StyleChange {
    int component;
    QString widget;
    QString before;
    QString after;
};

/// Works every control and leaves the last one short of its last band: with that the run would be
/// over and the log be written.
void workUnit(MainWindow& station)
{
    for (const int component : unitscript::runOrder(false))
        for (const UnitStep& step :
             unitscript::worked(component, {Fault::NoHighEnd, roster::lastComponent}))
            station.handleIncomingMidiMessage(nullptr, step.message);
    paintChanges(station);
}

/// What one reset of a unit that was worked changes; texts that are already there are left out.
std::vector<StyleChange> changesOfReset(MainWindow& station)
{
    std::vector<StyleChange> changes;
    workUnit(station);
    for (const ComponentPanel* panel : station.findChildren<ComponentPanel*>())
        for (const QWidget* widget : panel->findChildren<QWidget*>())
            changes.push_back({panel->component(), widget->objectName(), widget->styleSheet(), {}});
    station.slot_Init();
    for (StyleChange& change : changes)
        for (const ComponentPanel* panel : station.findChildren<ComponentPanel*>())
            if (panel->component() == change.component)
                change.after = panel->findChild<QWidget*>(change.widget)->styleSheet();
    const auto same = [](const StyleChange& change) { return change.before == change.after; };
    changes.erase(std::remove_if(changes.begin(), changes.end(), same), changes.end());
    return changes;
}

void reset(benchmark::State& state, MainWindow& station)
{
    const Shown shown(station);
    while (state.KeepRunning()) {
        state.PauseTiming();
        workUnit(station);
        state.ResumeTiming();
        station.slot_Init();
        paintChanges(station);
    }
}

/// The same style sheets set on the widgets of bare forms, and their repaint.
void restyleBareForms(benchmark::State& state, const std::vector<StyleChange>& changes)
{
    BareStation bare;
    const Shown shown(bare);
    std::vector<QWidget*> widgets;
    widgets.reserve(changes.size());
    for (const StyleChange& change : changes)
        widgets.push_back(bare.panel(change.component)->findChild<QWidget*>(change.widget));
    const auto set = [&](QString StyleChange::*text) {
        for (std::size_t i = 0; i < changes.size(); ++i)
            widgets.at(i)->setStyleSheet(changes.at(i).*text);
        paintChanges(bare);
    };
    while (state.KeepRunning()) {
        state.PauseTiming();
        set(&StyleChange::before);
        state.ResumeTiming();
        set(&StyleChange::after);
    }
}

/// Construction and the first frame; what comes after is not measured.
template <typename Window>
void construct(benchmark::State& state)
{
    while (state.KeepRunning()) {
        auto window = std::make_unique<Window>();
        showPainted(*window);
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}
} // namespace

void addWindowRows(MainWindow& station)
{
    addRow(
        {"44 panels reset, window shown", 1.1}, [&](auto& state) { reset(state, station); },
        [changes = changesOfReset(station)](auto& state) { restyleBareForms(state, changes); });
    // The floor: the same widget tree and style texts, as uic makes them.
    addRow({"window constructed and painted", 1.3}, construct<MainWindow>, construct<BareStation>);
}
