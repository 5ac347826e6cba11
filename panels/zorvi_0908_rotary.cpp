// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_rotary.h"

#include "ui_zorvi_0908_rotary.h"
#include "unit/unitmessages.h"

Zorvi_0908_Rotary::Zorvi_0908_Rotary(QWidget* parent, int panelTag, int num)
    : ComponentPanel(parent, panelTag, num)
    , form(std::make_unique<Ui::Zorvi_0908_Rotary>())
{
    form->setupUi(this);
    adoptForm(form->frame);
}

Zorvi_0908_Rotary::~Zorvi_0908_Rotary() = default;

bool Zorvi_0908_Rotary::accepts(const MidiMessage& midiMessage) const
{
    return midiMessage.isControllerOfType(unitmessages::controllerOf(getComponentNum()));
}

int Zorvi_0908_Rotary::valueOf(const MidiMessage& midiMessage) const
{
    return midiMessage.getControllerValue();
}

QString Zorvi_0908_Rotary::underTestStyle() const
{
    // On purpose without the QFrame selector of the other kinds: the frame has no children that the
    // selector would keep the style from.
    return QStringLiteral("border:none; background: blue;");
}

void Zorvi_0908_Rotary::display(int value)
{
    form->dial->setValue(value);
}

void Zorvi_0908_Rotary::showPassed()
{
    raiseAndShowDone();
}
