// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ui_mainwindow.h"
#include "ui_zorvi_0908_button.h"
#include "ui_zorvi_0908_fader.h"
#include "ui_zorvi_0908_rotary.h"
#include "unit/panelplacement.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <array>

using juce::MidiMessage;

// The baselines of the window: the same library calls with nothing of the station around them.

/// A slot that does nothing with a message.
class BaselineSlot : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void slot_ReceiveMIDI(MidiMessage) {}
};

/// Sends messages to as many slots as there are panels.
class BaselineBroadcast : public QObject
{
    Q_OBJECT

public:
    BaselineBroadcast()
    {
        for (const BaselineSlot& emptySlot : emptySlots)
            connect(this, SIGNAL(signal_DistributeMIDI(MidiMessage)), &emptySlot,
                    SLOT(slot_ReceiveMIDI(MidiMessage)));
    }

Q_SIGNALS:
    void signal_DistributeMIDI(MidiMessage midiMessage);

private:
    std::array<BaselineSlot, roster::componentCount> emptySlots;
};

/// The station's widgets as uic makes them, without the classes that own them. The first fader's
/// slider follows the messages, and each band that is new turns its square white.
class BaselineStation : public QMainWindow
{
    Q_OBJECT

public:
    BaselineStation()
    {
        Ui::MainWindow().setupUi(this);
        addPanels<Ui::Zorvi_0908_Button>(roster::firstButton, roster::firstRotary);
        addPanels<Ui::Zorvi_0908_Rotary>(roster::firstRotary, roster::componentCount);
        addPanels<Ui::Zorvi_0908_Fader>(roster::firstFader + 1, roster::firstButton);
        firstFader = addPanels<Ui::Zorvi_0908_Fader>(roster::firstFader, roster::firstFader + 1);
    }

    /// The first fader with no band covered, under test on its blue background.
    void armFirstFader()
    {
        auto* background = firstFader->findChild<QFrame*>("frame");
        background->lower();
        background->setStyleSheet("QFrame{border:none; background: blue;}");
        firstFader->setAttribute(Qt::WA_OpaquePaintEvent);
        for (int band = 0; band < 13; ++band)
            square(band)->setStyleSheet("background: black;");
    }

public Q_SLOTS:
    void slot_ReceiveMIDI(MidiMessage midiMessage)
    {
        constexpr int bandWidth = 10;
        const int value = midiMessage.getControllerValue();
        if (value % bandWidth == 0)
            square(value / bandWidth)->setStyleSheet("background: white;");
        firstFader->findChild<QSlider*>()->setValue(value);
    }

private:
    QWidget* firstFader = nullptr;

    /// Returns the last panel.
    template <typename Form>
    QWidget* addPanels(int first, int end)
    {
        QWidget* panel = nullptr;
        for (int c = first; c < end; ++c) {
            panel = new QWidget(this);
            Form().setupUi(panel);
            panel->move(panelPosition(c).value_or(QPoint()));
            panel->setVisible(c != roster::channelButton && c != roster::powerButton);
        }
        return panel;
    }

    QLabel* square(int band) const
    {
        return firstFader->findChild<QLabel*>(QStringLiteral("label_%1").arg(band));
    }
};
