// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/mainwindow.h"
#include "panels/componentpanel.h"

/// What makes a control pass, in as few messages as it has bands. The numbers are written out here
/// once more, from the unit's own tables, so that a wrong one in the station is found.
QVector<juce::MidiMessage> passingMessages(int componentNum);

namespace panelstates
{
/// The bands that are covered, where the labels show the same; otherwise {-1}.
QVector<int> coveredBands(const ComponentPanel& panel);

/// Empty if the panel is in one of its states; otherwise what is wrong with it. While a run goes in
/// its order, components before the armed one are done and the later ones untested.
QString problem(const ComponentPanel& panel, int armed);
} // namespace panelstates

/// The armed component as the window announces it, and whether every panel is as it may be then.
class StateWatch : public QObject
{
public:
    explicit StateWatch(MainWindow& window);
    /// The first problem among the panels.
    QString problem() const;

    int armed = 0;

private:
    const QList<ComponentPanel*> panels;
};
