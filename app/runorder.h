// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

/// What a run does once a component has its verdict.
enum class RunAction {
    Queue, ///< Arm the component.
    Skip,  ///< Pass over the component: this station does not test it.
    Finish ///< The run is over; the component stays the one that was armed.
};

struct RunStep {
    RunAction action;
    int component;
};

/// The step after the verdict on `judged` while `armed` is under test. The run moves on by one from
/// the armed number, for a verdict on another panel as well; a verdict on the last tested button
/// always leads to the first rotary. Only a station with the marker (tarvekStation) tests the
/// channel button.
RunStep stepAfterVerdict(int judged, int armed, bool tarvekStation);
