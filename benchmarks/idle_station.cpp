// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "simulator/simulatedunit.h"

#include <QApplication>

/// The station with an idle unit connected.
int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    setCaptionFont();
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    SimulatedUnit unit;
    if (!unit.plug())
        return EXIT_FAILURE;
    MainWindow window;
    window.show();
    return QApplication::exec();
}
