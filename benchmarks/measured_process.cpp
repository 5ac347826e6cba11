// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "simulator/simulatedunit.h"
#include "simulator/unitscript.h"

#include <QApplication>
#include <QTimer>

#include <iostream>

namespace
{
/// An empty window of the station's size that does with the library what the station does: it
/// listens to the unit, and polls the ports as often.
class Baseline : public QMainWindow, private juce::MidiInputCallback
{
public:
    Baseline()
    {
        resize(1086, 602);
        for (const auto& port : juce::MidiInput::getAvailableDevices())
            input = juce::MidiInput::openDevice(port.identifier, this);
        input->start();
        startTimer(1000);
    }

private:
    void handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage&) override {}
    void timerEvent(QTimerEvent*) override { juce::MidiInput::getAvailableDevices(); }

    std::unique_ptr<juce::MidiInput> input;
};

/// Has the station judge messages of a fader that is never moved to its end.
void receive(MainWindow& station, int messages)
{
    constexpr int burst = 100;
    const UnitScript sweep = unitscript::good(roster::firstFader);
    for (int i = 0; i < messages; ++i) {
        station.handleIncomingMidiMessage(nullptr, sweep.at(i % burst).message);
        if (i % burst == 0)
            QCoreApplication::processEvents();
    }
}
} // namespace

/// usage: zorvi_measured_process [MESSAGES]
/// A station that has received so many messages, or the baseline, with an idle unit connected. It
/// prints a line once nothing happens any more.
int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    setCaptionFont();
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    SimulatedUnit unit;
    if (!unit.plug())
        return EXIT_FAILURE;
    std::unique_ptr<QMainWindow> window;
    if (argc == 1) {
        window = std::make_unique<Baseline>();
    } else {
        auto station = std::make_unique<MainWindow>();
        station->slot_PollDevices();
        receive(*station, QApplication::arguments().at(1).toInt());
        window = std::move(station);
    }
    window->show();
    QTimer::singleShot(1000, [] { std::cout << "idle" << std::endl; });
    return QApplication::exec();
}
