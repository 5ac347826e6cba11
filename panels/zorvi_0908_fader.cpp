// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_fader.h"

#include "ui_zorvi_0908_fader.h"
#include "unit/unitmessages.h"

Zorvi_0908_Fader::Zorvi_0908_Fader(QWidget* parent, int panelTag, int num)
    : ComponentPanel(parent, panelTag, num)
    , form(std::make_unique<Ui::Zorvi_0908_Fader>())
{
    form->setupUi(this);
    adoptForm(form->frame);
}

Zorvi_0908_Fader::~Zorvi_0908_Fader() = default;

bool Zorvi_0908_Fader::accepts(const MidiMessage& midiMessage) const
{
    return midiMessage.isControllerOfType(unitmessages::controllerOf(getComponentNum()));
}

int Zorvi_0908_Fader::valueOf(const MidiMessage& midiMessage) const
{
    return midiMessage.getControllerValue();
}

QString Zorvi_0908_Fader::underTestStyle() const
{
    return QStringLiteral("QFrame{border:none; background: blue;}");
}

void Zorvi_0908_Fader::display(int value)
{
    form->verticalSlider->setValue(value);
}

void Zorvi_0908_Fader::showPassed()
{
    raiseAndShowDone();
}
