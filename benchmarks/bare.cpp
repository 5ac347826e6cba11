// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/bare.h"

#include "ui_mainwindow.h"
#include "ui_zorvi_0908_button.h"
#include "ui_zorvi_0908_fader.h"
#include "ui_zorvi_0908_rotary.h"
#include "unit/componentroster.h"
#include "unit/panelplacement.h"

#include <QFrame>
#include <QLabel>
#include <QSlider>

namespace
{
void setUpForm(QWidget* panel, int componentNum)
{
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        return Ui::Zorvi_0908_Fader().setupUi(panel);
    case roster::Kind::Button:
        return Ui::Zorvi_0908_Button().setupUi(panel);
    case roster::Kind::Rotary:
        return Ui::Zorvi_0908_Rotary().setupUi(panel);
    }
}
} // namespace

BareBroadcast::BareBroadcast(QObject* first)
{
    static_assert(std::tuple_size_v<decltype(bareSlots)> == roster::componentCount);
    for (std::size_t i = 0; i < bareSlots.size(); ++i)
        connect(this, SIGNAL(signal_DistributeMIDI(MidiMessage)),
                i == 0 && first != nullptr ? first : &bareSlots.at(i),
                SLOT(slot_ReceiveMIDI(MidiMessage)));
}

BareStation::BareStation()
{
    Ui::MainWindow().setupUi(this);
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        auto* panel = new QWidget(this);
        setUpForm(panel, c);
        if (c == roster::firstFader)
            firstFader = panel;
        const auto place = panelPlace(c);
        if (place)
            panel->move(*place);
        panel->setVisible(place && c != roster::channelButton);
    }
    slider = firstFader->findChild<QSlider*>();
    for (std::size_t i = 0; i < squares.size(); ++i)
        squares.at(i) = firstFader->findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
}

void BareStation::armFirstFader()
{
    auto* ground = firstFader->findChild<QFrame*>(QStringLiteral("frame"));
    ground->lower();
    ground->setStyleSheet(QStringLiteral("QFrame{border:none; background: blue;}"));
    firstFader->setAttribute(Qt::WA_OpaquePaintEvent);
    for (QLabel* square : squares)
        square->setStyleSheet(QStringLiteral("background: black;"));
}

void BareStation::slot_ReceiveMIDI(MidiMessage midiMessage)
{
    constexpr int bandWidth = 10;
    const int value = midiMessage.getControllerValue();
    const auto band = static_cast<std::size_t>(value / bandWidth);
    if (value % bandWidth == 0)
        squares.at(band)->setStyleSheet(QStringLiteral("background: white;"));
    slider->setValue(value);
}
