// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

namespace Ui
{
class Zorvi_0908_Fader;
}

/// The panel of one linear fader: judges the value of its controller and shows it on a slider. Its
/// style sheet is on purpose without two outlines of the other kinds: in so narrow a slider they
/// would take room from the bar that shows the value.
class Zorvi_0908_Fader : public ComponentPanel
{
    Q_OBJECT

public:
    /// componentNum: 0 to 8.
    Zorvi_0908_Fader(QWidget* parent, int tag, int componentNum);
    ~Zorvi_0908_Fader() override;

protected:
    bool accepts(const MidiMessage& midiMessage) const override;
    int valueOf(const MidiMessage& midiMessage) const override;
    QString underTestStyle() const override;
    void display(int value) override;
    void showPassed() override;

private:
    const std::unique_ptr<Ui::Zorvi_0908_Fader> form;
};
