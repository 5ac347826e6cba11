// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/testlog.h"
#include "simulator/unitfault.h"

#include <memory>
#include <vector>

class ComponentPanel;

/// The station's panels without its window: they judge the script of a simulated unit in no time.
/// Needs a QApplication.
class PanelRun
{
public:
    PanelRun();
    ~PanelRun();
    PanelRun(const PanelRun&) = delete;
    PanelRun& operator=(const PanelRun&) = delete;

    /// Returns what the panels recorded once every control was worked in the order of a run, each
    /// once, at a TARVEK station or another one.
    testlog::Coverage coverageOf(const UnitFault& unit, bool isTarvekStation);

    /// Returns in words what in a log differs from such a run, or why it is no log; empty if
    /// nothing does.
    QString differences(const QByteArray& log, const UnitFault& unit, bool isTarvekStation);

private:
    std::vector<std::unique_ptr<ComponentPanel>> panels; ///< By component number.
};
