// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <QMainWindow>

#include <array>
#include <vector>

class QLabel;
class QSlider;

using juce::MidiMessage;

// What the floors are made of: the same library calls with nothing of the station around them.

/// A slot that does nothing with a message.
class BareSlot : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void slot_ReceiveMIDI(MidiMessage) {}
};

/// Sends each message to as many slots as there are panels: the one given first, if any, then bare
/// ones.
class BareBroadcast : public QObject
{
    Q_OBJECT

public:
    explicit BareBroadcast(QObject* first = nullptr);

Q_SIGNALS:
    void signal_DistributeMIDI(MidiMessage midiMessage);

private:
    std::array<BareSlot, 44> bareSlots;
};

/// A window of the station's size that holds one fader's slider and squares alone, where its panel
/// has them and with the panel's style sheet on them.
class BareFaderWindow : public QMainWindow
{
public:
    BareFaderWindow();

    QWidget* panel() const { return barePanel; }

private:
    QWidget* barePanel;
};

/// Moves the slider of a panel to what a message says and, if it covers bands, turns a square
/// white.
class BareFader : public QObject
{
    Q_OBJECT

public:
    BareFader(const QWidget& panel, bool coversBands);

    /// Every square black.
    void blank();

public Q_SLOTS:
    void slot_ReceiveMIDI(MidiMessage midiMessage);

private:
    const bool covers;
    QSlider* slider;
    std::array<QLabel*, 13> squares{};
};

/// The station's widgets as uic makes them, with nothing behind them.
class BareStation : public QMainWindow
{
public:
    BareStation();

    /// The bare panel of a component.
    QWidget* panel(int component) const
    {
        return barePanels.at(static_cast<std::size_t>(component));
    }

private:
    std::vector<QWidget*> barePanels;
};
