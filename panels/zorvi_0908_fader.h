// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <memory>

namespace Ui
{
class Zorvi_0908_Fader;
}

/// The panel of one linear fader: judges the position that its controller reports and lets a slider
/// follow it. Its style sheet lacks two outlines that the other panels' have, on purpose: the
/// vertical slider has none.
class Zorvi_0908_Fader : public ComponentPanel
{
    Q_OBJECT

public:
    /// componentNum: 0 to 8.
    Zorvi_0908_Fader(QWidget* parent, int tag, int componentNum);
    ~Zorvi_0908_Fader() override;

protected:
    void display(int value) override;

private:
    const std::unique_ptr<Ui::Zorvi_0908_Fader> form;
};
