// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

namespace Ui
{
class Zorvi_0908_Rotary;
}

/// The panel of one rotary: judges the absolute position that its controller reports, against the
/// same bands as a fader, and lets a dial follow it.
class Zorvi_0908_Rotary : public ComponentPanel
{
    Q_OBJECT

public:
    /// componentNum: 40 to 43.
    Zorvi_0908_Rotary(QWidget* parent, int tag, int componentNum);
    ~Zorvi_0908_Rotary() override;

protected:
    QString underTestStyle() const override;
    void display(int value) override;

private:
    const std::unique_ptr<Ui::Zorvi_0908_Rotary> form;
};
