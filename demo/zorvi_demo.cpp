// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/appearance.h"
#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "audio/soundfiles.h"
#include "demo/demodirector.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTextStream>

#include <optional>
#include <stdexcept>

namespace
{
constexpr double visiblePace = 200;
constexpr double fastPace = 2000;

int fail(const QString& line)
{
    QTextStream(stderr) << "zorvi_demo: " << line << Qt::endl;
    return 1;
}

/// Throws std::runtime_error for a bad value; QCommandLineParser ends the program on --help,
/// --version and unknown options.
DemoOptions optionsOf(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "The test station and a simulated unit in one program: a whole run, without hardware."));
    parser.addHelpOption();
    parser.addVersionOption();
    unitoptions::addTo(
        parser, application.arguments().contains(QLatin1String("--once")) ? fastPace : visiblePace);
    parser.addOption({QStringLiteral("once"),
                      QStringLiteral("Play one run fast (%1 messages per second), save pictures, "
                                     "check the log and end; exit status 0 only if the log is "
                                     "right.")
                          .arg(fastPace)});
    parser.addOption({QStringLiteral("output"),
                      QStringLiteral("Folder for start.png, middle.png and end.png (default: the "
                                     "current one with --once, else no pictures)."),
                      QStringLiteral("folder")});
    parser.addOption({QStringLiteral("serial"),
                      QStringLiteral("Serial number to type in (default: DEMO)."),
                      QStringLiteral("text"), QStringLiteral("DEMO")});
    parser.addOption(
        {QStringLiteral("tarvek"), QStringLiteral("A TARVEK station: tests component 18 too.")});
    parser.process(application);

    const auto unit = unitoptions::readFrom(parser);
    const bool once = parser.isSet(QStringLiteral("once"));
    QString folder = once ? QStringLiteral(".") : QString();
    if (parser.isSet(QStringLiteral("output")))
        folder = parser.value(QStringLiteral("output"));
    if (!folder.isEmpty() && !QDir().mkpath(folder))
        throw std::runtime_error("the folder " + folder.toStdString() + " cannot be created.");
    return {unit, once, parser.isSet(QStringLiteral("tarvek")),
            parser.value(QStringLiteral("serial")), folder};
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication::setApplicationVersion(QStringLiteral(ZORVI_VERSION));
    std::optional<DemoOptions> options;
    try {
        // Before there is a window system, so that --help needs none.
        options = optionsOf(QCoreApplication(argc, argv));
    } catch (const std::runtime_error& error) {
        return fail(QString::fromUtf8(error.what()));
    }
    fitCaptionsToLayout();
    const QApplication application(argc, argv);
    setAppearance();
    const QString problem = soundFileProblem(QCoreApplication::applicationDirPath());
    if (!problem.isEmpty())
        return fail(problem);
    if (options->isTarvekStation)
        QApplication::setApplicationName(QStringLiteral("zorvi_demo_TARVEK"));

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    MainWindow station;
    station.show();
    DemoDirector director(station, *options);

    const bool once = options->once;
    QObject::connect(&director, &DemoDirector::signal_Finished, &director, [once](int result) {
        if (once || result != 0)
            QCoreApplication::exit(result);
    });
    QTimer::singleShot(0, &director, [&director] { director.start(); });
    const int status = QApplication::exec();
    return once && !director.isOver() ? 1 : status; // a window closed early is no whole run
}
