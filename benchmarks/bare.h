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

/// A window of the station's size that holds one slider and thirteen squares, with the fader
/// panel's style sheet on them; they are where that panel has them. A message moves the slider.
class BareFader : public QMainWindow
{
    Q_OBJECT

public:
    explicit BareFader(bool coversBands);

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
