// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/makepanel.h"

#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"
#include "unit/componentroster.h"

std::unique_ptr<ComponentPanel> makePanel(int componentNum, QWidget* parent)
{
    constexpr int tag = -1;
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        return std::make_unique<Zorvi_0908_Fader>(parent, tag, componentNum);
    case roster::Kind::Button:
        return std::make_unique<Zorvi_0908_Button>(parent, tag, componentNum);
    case roster::Kind::Rotary:
        break;
    }
    return std::make_unique<Zorvi_0908_Rotary>(parent, tag, componentNum);
}
