// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_button.h"

#include "panels/unitmessages.h"
#include "ui_zorvi_0908_button.h"

Zorvi_0908_Button::Zorvi_0908_Button(QWidget* parent, int panelTag, int component)
    : ComponentPanel(parent, panelTag, component)
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
    // A note on the channel button's channel also counts for the button that owns the note. The
    // overlap is kept: only the button under test judges, so it decides no more than who beeps.
    if (component() == roster::channelButton)
        return midiMessage.getChannel() == unitmessages::channelButtonChannel;
    return midiMessage.getNoteNumber() == unitmessages::noteOf(component());
}

int Zorvi_0908_Button::valueOf(const MidiMessage& midiMessage) const
{
    // Also of a note-off: a release counts only with velocity 0, however it is sent.
    return midiMessage.getVelocity();
}

QVector<ComponentRange> Zorvi_0908_Button::freshRanges() const
{
    constexpr float released = 0.0F;
    constexpr float fullyPressed = 127.0F;
    return {{released, released, 0.0F}, {fullyPressed, fullyPressed, 0.0F}};
}

void Zorvi_0908_Button::showPassed()
{
    // Restyled before raised, unlike the others: the button keeps the order it was built with.
    veilAsDone();
}
