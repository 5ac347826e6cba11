// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundserver.h"
#include "tests/support/station.h"

#include <QLoggingCategory>

#include <csignal>

namespace
{
/// A PulseAudio server, which is ALSA's default device.
struct PulseAudio : QProcess {
    PulseAudio()
    {
        const QString socket = home.filePath("native");
        qputenv("HOME", QFile::encodeName(home.path())); // where ALSA looks
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.path()));
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socket));
        qputenv("PULSE_LATENCY_MSEC", "50"); // else this sink plays once in two seconds
        QFile alsa(home.filePath(".asoundrc"));
        alsa.open(QIODevice::WriteOnly);
        alsa.write("pcm.!default { type pulse }\n");
        start("setpriv", {"--pdeathsig", "KILL", "pulseaudio", "-n", "--daemonize=no",
                          "--exit-idle-time=-1", "--use-pid-file=no", "-L", "module-null-sink",
                          "-L", "module-native-protocol-unix socket=" + socket});
        const auto answers = [] { return QProcess::execute("pactl", {"stat"}) == 0; };
        if (!QTest::qWaitFor(answers, 30000))
            qFatal("PulseAudio does not start");
    }
    ~PulseAudio() override
    {
        QProcess::kill();
        waitForFinished();
    }
    /// Stops or ends the server by a signal; suspends its sink without one.
    void stop(int signal) const
    {
        if (signal != 0)
            ::kill(static_cast<pid_t>(processId()), signal);
        else
            QProcess::execute("pactl", {"suspend-sink", "0", "1"});
    }

    const QTemporaryDir home;
};
} // namespace

/// Sound servers that stop: the window opens, the run goes on, the window closes.
class TestSoundServer : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("*.debug=false"); }

    void stops_data()
    {
        QTest::addColumn<bool>("beforeTheStart");
        QTest::addColumn<int>("signal");
        QTest::newRow("suspended before the start") << true << 0;
        QTest::newRow("stopped before the start") << true << SIGSTOP;
        QTest::newRow("stopped in mid-run") << false << SIGSTOP;
        QTest::newRow("killed in mid-run") << false << SIGKILL;
    }

    void stops()
    {
        QFETCH(bool, beforeTheStart);
        QFETCH(int, signal);
        const PulseAudio server;
        QElapsedTimer timer;
        timer.start();
        if (beforeTheStart) {
            server.stop(signal);
            QTest::ignoreMessage(QtWarningMsg,
                                 "The sound server does not play: no sound until the next start.");
        }
        soundserver::startTest();
        auto window = std::make_unique<MainWindow>();
        if (!beforeTheStart)
            server.stop(signal);
        const QSignalSpy armed(window.get(), &MainWindow::signal_QueueComponent);
        for (int c = 0; c < 43; ++c)
            station::receive(*window, passingMessages(c));
        QCOMPARE(armed.last().at(0).toInt(), 43);
        window.reset();
        QVERIFY(timer.elapsed() < 20000); // for a busy machine; what does not end takes for ever
    }
};

QTEST_MAIN(TestSoundServer)
#include "test_soundserver.moc"
