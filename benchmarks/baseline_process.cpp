// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <juce_audio_devices/juce_audio_devices.h>

#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QTimer>

/// The baseline of the station as a process: a window of its size that does with the libraries what
/// an idle station does. It polls the ports each second, ticks each 10 ms and blinks in a field.
int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    QMainWindow window;
    window.resize(1086, 602);
    QLineEdit field(&window);
    field.setFocus();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [] { juce::MidiInput::getAvailableDevices(); });
    poll.start(1000);
    QTimer tick;
    tick.start(10);
    window.show();
    return QApplication::exec();
}
