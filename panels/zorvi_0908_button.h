// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

namespace Ui
{
class Zorvi_0908_Button;
}

/// The panel of one push button: passes when it was fully pressed and released, in either order.
/// Its frame is on purpose taller than the panel, so that it covers the panel whole; the rest is
/// clipped.
class Zorvi_0908_Button : public ComponentPanel
{
    Q_OBJECT

public:
    /// componentNum: 9 to 39.
    Zorvi_0908_Button(QWidget* parent, int tag, int componentNum);
    ~Zorvi_0908_Button() override;

protected:
    bool accepts(const MidiMessage& midiMessage) const override;
    int valueOf(const MidiMessage& midiMessage) const override;
    QString underTestStyle() const override;
    void display(int) override {} // no display on a button's panel
    void showPassed() override;

private:
    const std::unique_ptr<Ui::Zorvi_0908_Button> form;
};
