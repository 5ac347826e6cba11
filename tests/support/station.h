// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/mainwindow.h"
#include "simulator/simulatedunit.h"

#include <QMessageBox>
#include <QTest>

/// What a test does to a station, and what it sees of it, as an operator would.
namespace station
{
QString deviceLabel(const MainWindow& window);
void setSerial(const MainWindow& window, const QString& serial);
/// Clicks the button with that object name.
void click(const MainWindow& window, const QString& button);
/// Plays a unit's messages to the window, on this thread.
void receive(MainWindow& window, const QVector<juce::MidiMessage>& messages);
/// The notice that is open; null if there is none.
QMessageBox* openNotice();

/// Keeps what the panels hear, on their thread: the bytes of each message.
class Hearing : public QObject
{
public:
    explicit Hearing(const MainWindow& window);
    QVector<QByteArray> messages;
};

QByteArray bytesOf(const juce::MidiMessage& message);
/// Whether a message that the unit sends now arrives at the panels.
bool hears(const MainWindow& window, SimulatedUnit& unit);

/// Silences the debug lines, of which there are thousands in some tests.
void quiet();
} // namespace station
