// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

namespace Ui
{
class Zorvi_0908_Rotary;
}

/// The panel of one rotary: judges the value of its controller, an absolute position, against the
/// same bands as a fader and shows it on a dial.
class Zorvi_0908_Rotary : public ComponentPanel
{
    Q_OBJECT

public:
    /// componentNum: 40 to 43.
    Zorvi_0908_Rotary(QWidget* parent, int tag, int componentNum);
    ~Zorvi_0908_Rotary() override;

protected:
    bool accepts(const MidiMessage& midiMessage) const override;
    int valueOf(const MidiMessage& midiMessage) const override;
    QString underTestStyle() const override;
    void display(int value) override;
    void showPassed() override;

private:
    const std::unique_ptr<Ui::Zorvi_0908_Rotary> form;
};
