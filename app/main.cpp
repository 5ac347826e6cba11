// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/appearance.h"
#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "audio/soundfiles.h"
#include "audio/soundserver.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <iostream>

namespace
{
/// Long enough to read the message; without an operator the program ends by itself.
constexpr int messageBoxMs = 60000;

/// Shows why the station cannot start, on the terminal and on the screen if there is one. Returns
/// the exit status.
int failToStart(const QString& reason)
{
    std::cerr << qPrintable(reason) << '\n';
    const QString platform = QGuiApplication::platformName();
    if (platform != QLatin1String("offscreen") && platform != QLatin1String("minimal")) {
        QMessageBox box(QMessageBox::Critical, QString(), reason);
        QTimer::singleShot(messageBoxMs, &box, &QDialog::reject);
        box.exec();
    }
    return EXIT_FAILURE;
}
} // namespace

int main(int argc, char* argv[])
{
    soundserver::startTest(); // while the process has one thread
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    setAppearance();
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QString problem = soundFileProblem(QCoreApplication::applicationDirPath());
    if (!problem.isEmpty())
        return failToStart(problem);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
