// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// What a run does after a component's result.
enum class RunAction {
    Queue, ///< Arm the component.
    Skip,  ///< Skip the component: this station does not test it.
    Finish ///< The run is over.
};

struct RunStep {
    RunAction action;
    int componentNum; ///< The new current component.
};

/// The step after a result of componentNum while currentComponent is armed. On purpose the run goes
/// on from the armed component, whichever component the result is from: a late result of a
/// component that is done does not take the run back. Only the last tested button and the last
/// component lead to a fixed step. tarvekStation: the station tests the channel button.
RunStep stepAfterResult(int componentNum, int currentComponent, bool tarvekStation);
