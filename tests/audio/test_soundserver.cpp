// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundserver.h"
#include "tests/support/station.h"

#include <QLoggingCategory>

#include <csignal>
#include <thread>

#include <alsa/asoundlib.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
void setDefaultDevice(const QTemporaryDir& home, const QByteArray& definition)
{
    qputenv("HOME", QFile::encodeName(home.path())); // where ALSA looks,
    snd_config_update_free_global();                 // again
    QFile alsa(home.filePath(".asoundrc"));
    alsa.open(QIODevice::WriteOnly);
    alsa.write("pcm.!default { " + definition + " }\n");
}

/// A PulseAudio server, which is ALSA's default device.
struct PulseAudio : QProcess {
    PulseAudio()
    {
        const QString socket = home.filePath("native");
        setDefaultDevice(home, "type pulse");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home.path()));
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socket));
        qputenv("PULSE_LATENCY_MSEC", "50"); // else this sink plays once in two seconds
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

/// A window that plays to a default device on every machine: a pipe, whose reader sets the pace, so
/// that nothing is lost.
struct HeardWindow {
    HeardWindow()
    {
        const QByteArray path = QFile::encodeName(home.filePath("pipe"));
        mkfifo(path, S_IRUSR | S_IWUSR);
        pipe = open(path, O_RDONLY | O_NONBLOCK);
        setDefaultDevice(home, "type asym capture.pcm null playback.pcm { type file format raw "
                               "slave.pcm null file \"" +
                                   path + "\" }");
        window = std::make_unique<MainWindow>();
    }

    /// The pipe is read meanwhile: the device closes when it has got rid of its last block.
    ~HeardWindow()
    {
        std::thread reader([this] {
            while (!played().empty()) {
            }
        });
        window.reset();
        reader.join();
    }

    /// What was played next; empty once the device is closed, or where nothing comes for ten
    /// seconds.
    std::vector<float> played() const
    {
        std::vector<float> samples(1024);
        pollfd ready{pipe, POLLIN, 0};
        poll(&ready, 1, 10000);
        const auto bytes = read(pipe, samples.data(), samples.size() * sizeof(float));
        samples.resize(bytes < 0 ? 0 : static_cast<std::size_t>(bytes) / sizeof(float));
        return samples;
    }

    /// How many samples are audible until all has rung out; -1 where nothing is played.
    int audibleSamples() const
    {
        int audible = 0;
        for (std::size_t count = 0; count < 180000;) {
            const auto samples = played();
            if (samples.empty())
                return -1;
            count += samples.size();
            for (const float sample : samples)
                audible += std::abs(sample) > 0.01F ? 1 : 0;
        }
        return audible;
    }

    const QTemporaryDir home;
    int pipe = -1;
    std::unique_ptr<MainWindow> window;
};
} // namespace

/// The station and its sound device.
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

    /// The window opens, the run goes on, the window closes.
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

    /// The requests of the panels and of the window, and the switch, told by how long they sound.
    void requestsAreHeard()
    {
        const HeardWindow heard;
        auto& window = *heard.window;
        const auto isHeard = [&heard](int min, int max) {
            const int samples = heard.audibleSamples();
            return samples >= min && samples <= max;
        };
        station::receive(window, {passingMessages(0).first()});
        QVERIFY(isHeard(4000, 7000)); // a click
        station::receive(window, passingMessages(1));
        QVERIFY(isHeard(25000, 40000)); // a beep
        Q_EMIT window.signal_Click();
        QVERIFY(isHeard(4000, 7000));
        station::click(window, "audioOnOff");
        Q_EMIT window.signal_Ding();
        QVERIFY(isHeard(0, 0));
        station::click(window, "audioOnOff");
        Q_EMIT window.signal_Ding();
        QVERIFY(isHeard(12000, 20000)); // a bell
        QTest::qWait(520);
        Q_EMIT window.signal_Beep(); // the first after the pause is dropped
        Q_EMIT window.signal_Beep();
        QVERIFY(isHeard(25000, 40000));
    }
};

QTEST_MAIN(TestSoundServer)
#include "test_soundserver.moc"
