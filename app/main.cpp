// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "app/testlog.h"
#include "audio/soundfiles.h"

#include <QApplication>
#include <QMessageBox>

#include <iostream>

namespace
{
/// Says on the terminal and on the screen why the station cannot start; gives the exit status.
int refuseToStart(const QString& reason)
{
    std::cerr << qPrintable(reason) << std::endl;
    QMessageBox::critical(nullptr, QString(), reason);
    return EXIT_FAILURE;
}
} // namespace

int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QString problem = soundFileProblem(QCoreApplication::applicationDirPath());
    if (!problem.isEmpty())
        return refuseToStart(problem);
    testlog::removeLeftovers(QCoreApplication::applicationDirPath());

    MainWindow window;
    window.show();
    return QApplication::exec();
}
