// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_rotary.h"

#include "ui_zorvi_0908_rotary.h"

Zorvi_0908_Rotary::Zorvi_0908_Rotary(QWidget* parent, int panelTag, int component)
    : ComponentPanel(parent, panelTag, component)
    , form(std::make_unique<Ui::Zorvi_0908_Rotary>())
{
    form->setupUi(this);
    adoptForm(form->frame);
}

Zorvi_0908_Rotary::~Zorvi_0908_Rotary() = default;

QString Zorvi_0908_Rotary::underTestStyle() const
{
    // Without the QFrame selector of the other panels, on purpose: the frame has no children that
    // the bare declarations could reach, so it looks the same.
    return QStringLiteral("border:none; background: blue;");
}

void Zorvi_0908_Rotary::display(int value)
{
    form->dial->setValue(value);
}
