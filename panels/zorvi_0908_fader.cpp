// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_fader.h"

#include "ui_zorvi_0908_fader.h"

Zorvi_0908_Fader::Zorvi_0908_Fader(QWidget* parent, int panelTag, int component)
    : ComponentPanel(parent, panelTag, component)
    , form(std::make_unique<Ui::Zorvi_0908_Fader>())
{
    form->setupUi(this);
    adoptForm(form->frame);
}

Zorvi_0908_Fader::~Zorvi_0908_Fader() = default;

void Zorvi_0908_Fader::display(int value)
{
    form->verticalSlider->setValue(value);
}
