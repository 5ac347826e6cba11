// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <QMainWindow>

#include <array>

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

/// Sends messages to as many slots as there are panels: bare ones after the first, if it is given.
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

/// The station's widgets as uic makes them, without the classes that own them. The first fader's
/// slider follows the messages, and each band that is new turns its square white.
class BareStation : public QMainWindow
{
    Q_OBJECT

public:
    BareStation();

    /// The first fader with no band covered, under test on its blue ground.
    void armFirstFader();

public Q_SLOTS:
    void slot_ReceiveMIDI(MidiMessage midiMessage);

private:
    QWidget* firstFader = nullptr;
    QSlider* slider = nullptr;
    std::array<QLabel*, 13> squares{};
};
