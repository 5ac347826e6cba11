// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_button.h"

#include "ui_zorvi_0908_button.h"
#include "unit/unitmessages.h"

Zorvi_0908_Button::Zorvi_0908_Button(QWidget* parent, int panelTag, int num)
    : ComponentPanel(parent, panelTag, num)
    , form(std::make_unique<Ui::Zorvi_0908_Button>())
{
    form->setupUi(this);
    adoptForm(form->frame);
}

Zorvi_0908_Button::~Zorvi_0908_Button() = default;

bool Zorvi_0908_Button::accepts(const MidiMessage& midiMessage) const
{
    if (!midiMessage.isNoteOnOrOff())
        return false;
    // On purpose a note on the channel button's channel also counts for the button with that note:
    // only the button under test judges, so the overlap matters for the beep alone.
    if (getComponentNum() == roster::channelButton)
        return midiMessage.getChannel() == unitmessages::channelButtonChannel;
    return midiMessage.getNoteNumber() == unitmessages::noteOf(getComponentNum());
}

int Zorvi_0908_Button::valueOf(const MidiMessage& midiMessage) const
{
    // Of a note-off too: only velocity 0 counts as released.
    return midiMessage.getVelocity();
}

QString Zorvi_0908_Button::underTestStyle() const
{
    return QStringLiteral("QFrame{border:none; background: blue;}");
}

void Zorvi_0908_Button::showPassed()
{
    showDone();
}
