// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "benchmarks/row.h"

#include <juce_events/juce_events.h>

#include <QApplication>

int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    // No sound device is opened here: what a machine's configuration of ALSA makes of that is not
    // the station's cost, and differs from machine to machine.
    qputenv("ALSA_CONFIG_PATH", "/dev/null");
    QApplication application(argc, argv);
    setCaptionFont();
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    // The station's debug lines: what a terminal takes for them is not the station's cost.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    MainWindow station;
    addWindowRows(station);
    addLogRows(station);
    addAudioRow();
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
