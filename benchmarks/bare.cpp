// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/bare.h"

#include "app/panelplacement.h"
#include "panels/componentroster.h"
#include "ui_mainwindow.h"
#include "ui_zorvi_0908_button.h"
#include "ui_zorvi_0908_fader.h"
#include "ui_zorvi_0908_rotary.h"

#include <QFrame>
#include <QLabel>
#include <QSlider>

namespace
{
constexpr int bandWidth = 10;

template <typename Form>
QWidget* barePanel(QWidget* parent)
{
    auto* panel = new QWidget(parent);
    Form().setupUi(panel);
    return panel;
}

QWidget* barePanel(QWidget* parent, int component)
{
    switch (roster::kindOf(component)) {
    case roster::Kind::Fader:
        return barePanel<Ui::Zorvi_0908_Fader>(parent);
    case roster::Kind::Button:
        return barePanel<Ui::Zorvi_0908_Button>(parent);
    case roster::Kind::Rotary:
        break;
    }
    return barePanel<Ui::Zorvi_0908_Rotary>(parent);
}
} // namespace

BareBroadcast::BareBroadcast(QObject* first)
{
    static_assert(std::tuple_size_v<decltype(bareSlots)> == roster::componentCount);
    for (std::size_t i = 0; i < bareSlots.size(); ++i) {
        QObject* receiver = i == 0 && first != nullptr ? first : &bareSlots.at(i);
        connect(this, SIGNAL(signal_DistributeMIDI(MidiMessage)), receiver,
                SLOT(slot_ReceiveMIDI(MidiMessage)));
    }
}

BareFaderWindow::BareFaderWindow()
{
    QMainWindow stationModel;
    Ui::MainWindow().setupUi(&stationModel);
    resize(stationModel.size());
    barePanel = ::barePanel<Ui::Zorvi_0908_Fader>(this);
    barePanel->move(*panelPlace(roster::firstFader, barePanel->width()));
    delete barePanel->findChild<QFrame*>(QStringLiteral("frame"));
}

BareFader::BareFader(const QWidget& panel, bool coversBands)
    : covers(coversBands)
    , slider(panel.findChild<QSlider*>())
{
    for (std::size_t i = 0; i < squares.size(); ++i)
        squares.at(i) = panel.findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
    blank();
}

void BareFader::blank()
{
    for (QLabel* square : squares)
        square->setStyleSheet(QStringLiteral("background: black;"));
}

void BareFader::slot_ReceiveMIDI(MidiMessage midiMessage)
{
    const int value = midiMessage.getControllerValue();
    if (covers)
        squares.at(static_cast<std::size_t>(value / bandWidth))
            ->setStyleSheet(QStringLiteral("background: white;"));
    slider->setValue(value);
}

BareStation::BareStation()
{
    Ui::MainWindow().setupUi(this);
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        QWidget* panel = barePanel(this, c);
        barePanels.push_back(panel);
        const auto place = panelPlace(c, barePanels.front()->width());
        if (place)
            panel->move(*place);
        panel->setVisible(place && c != roster::channelButton);
    }
}
