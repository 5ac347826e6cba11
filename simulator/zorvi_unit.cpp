// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/simulatedunit.h"
#include "simulator/unitoptions.h"
#include "simulator/unitplayer.h"

#include <alsa/asoundlib.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <optional>
#include <stdexcept>
#include <vector>

namespace
{
struct Options {
    UnitOptions unit;
    int runs;
    int delayMs;
    bool withChannelButton;
};

void ignoreLibraryErrors(const char*, int, const char*, int, const char*, ...) {}

void print(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

int fail(const QString& line)
{
    QTextStream(stderr) << QCoreApplication::applicationName() << ": " << line << Qt::endl;
    return 1;
}

/// Throws std::runtime_error for a bad value; QCommandLineParser ends the program on --help,
/// --version and unknown options.
Options optionsOf(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A simulated unit: a virtual MIDI port named Zorvi_Control that works every "
                       "control in the order of a test run."));
    parser.addHelpOption();
    parser.addVersionOption();
    unitoptions::addTo(parser, 200);
    parser.addOption({QStringLiteral("runs"), QStringLiteral("Whole runs to play (default: 1)."),
                      QStringLiteral("number"), QStringLiteral("1")});
    parser.addOption({QStringLiteral("delay"),
                      QStringLiteral("Seconds to wait before each run, so that the station finds "
                                     "the unit and the operator is ready (default: 3)."),
                      QStringLiteral("seconds"), QStringLiteral("3")});
    parser.addOption(
        {QStringLiteral("tarvek"), QStringLiteral("Work component 18 too, for a TARVEK station.")});
    parser.process(application);

    const auto unit = unitoptions::readFrom(parser);
    const int runs = unitoptions::wholeNumber(parser, QStringLiteral("runs"), 1, 1000000);
    const double delay = unitoptions::number(parser, QStringLiteral("delay"), 0, 3600);
    return {unit, runs, static_cast<int>(delay * 1000), parser.isSet(QStringLiteral("tarvek"))};
}

/// Plays the runs and ends the event loop after the last one.
class Runs
{
public:
    Runs(UnitPlayer& unitPlayer, const Options& runOptions)
        : player(unitPlayer)
        , options(runOptions)
        , order(unitscript::runOrder(runOptions.withChannelButton))
    {
        player.setPace(options.unit.pace);
        QObject::connect(&player, &UnitPlayer::signal_Finished, &player, [this] { workNext(); });
    }

    void start()
    {
        print(QStringLiteral("Run %1 of %2 begins in %3 s.")
                  .arg(run)
                  .arg(options.runs)
                  .arg(options.delayMs / 1000.0));
        QTimer::singleShot(options.delayMs, &player, [this] { workNext(); });
    }

private:
    void workNext()
    {
        if (next < order.size()) {
            const int componentNum = order[next++];
            print(QStringLiteral("Component %1 (%2 of %3)")
                      .arg(componentNum)
                      .arg(next)
                      .arg(order.size()));
            player.play(unitfault::scriptFor(componentNum, options.unit.unit));
            return;
        }
        next = 0;
        if (run++ < options.runs)
            start();
        else
            QCoreApplication::quit();
    }

    UnitPlayer& player;
    const Options options;
    const std::vector<int> order;
    std::size_t next = 0;
    int run = 1;
};
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zorvi_unit"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZORVI_VERSION));
    snd_lib_error_set_handler(ignoreLibraryErrors);

    std::optional<Options> options;
    try {
        options = optionsOf(application);
    } catch (const std::runtime_error& error) {
        return fail(QString::fromUtf8(error.what()));
    }
    SimulatedUnit unit;
    if (!unit.plug())
        return fail(QStringLiteral("this machine has no ALSA sequencer (/dev/snd/seq) to plug the "
                                   "unit into; \"modprobe snd-seq\" loads it."));
    UnitPlayer player(unit);
    Runs runs(player, *options);
    runs.start();
    return QCoreApplication::exec();
}
