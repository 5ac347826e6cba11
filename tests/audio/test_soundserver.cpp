// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/audio/expectedsound.h"
#include "tests/support/soundcard.h"
#include "tests/support/station.h"

#include <QSignalSpy>
#include <QtTest>

#include <csignal>
#include <thread>

namespace
{
/// A PulseAudio server, ALSA's default device, whose sink is the card's pipe.
class PulseAudio
{
public:
    explicit PulseAudio(const SoundCard& card)
    {
        const QString socket = card.home.filePath("native");
        QFile::remove(socket);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(card.home.path()));
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socket));
        card.define("type pulse");
        process.start("setpriv",
                      {"--pdeathsig", "KILL", "pulseaudio", "-n", "--daemonize=no",
                       "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes", "-L",
                       "module-pipe-sink format=float32le channels=2 file=" + card.pipePath, "-L",
                       "module-native-protocol-unix socket=" + socket});
        if (!QTest::qWaitFor([&] { return QFile::exists(socket); }, 30000))
            qFatal("PulseAudio does not start");
        listener = std::thread([this, &card] {
            for (auto next = card.read(); !next.empty(); next = card.read())
                heard = heard || peak({next.begin(), next.end()}) > 0.05;
        });
    }
    ~PulseAudio()
    {
        process.kill();
        process.waitForFinished();
        listener.join();
    }
    void signal(int number) const { kill(static_cast<pid_t>(process.processId()), number); }
    void suspendSink() const { QProcess::execute("pactl", {"suspend-sink", "0", "1"}); }
    bool isHeard() const { return heard; }

private:
    QProcess process;
    std::atomic<bool> heard{false};
    std::thread listener;
};

bool isRunComplete(MainWindow& window)
{
    const QSignalSpy armed(&window, &MainWindow::signal_QueueComponent);
    for (int c = 0; c < 43; ++c)
        station::receive(window, passingMessages(c));
    return armed.last().at(0).toInt() == 43;
}

constexpr int maxMs = 20000; // for a busy machine; what does not end takes for ever
} // namespace

/// Sound servers that stop: the window opens, the run goes on, the window closes.
class TestSoundServer : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const SoundCard card;

private Q_SLOTS:
    void initTestCase() { station::quiet(); }

    void suspendedBeforeTheStart()
    {
        const PulseAudio server(card);
        server.suspendSink();
        QElapsedTimer timer;
        timer.start();
        {
            MainWindow window;
            QVERIFY(isRunComplete(window));
        }
        QVERIFY(timer.elapsed() < maxMs);
    }

    /// The program itself draws its window and goes on.
    void stoppedBeforeTheStart()
    {
        const PulseAudio server(card);
        server.signal(SIGSTOP);
        qputenv("QT_LOGGING_RULES", "qt.widgets.painting.info=true");
        QProcess program;
        program.setReadChannel(QProcess::StandardError);
        program.start(ZORVI_STATION, QStringList());
        qunsetenv("QT_LOGGING_RULES");
        QByteArray printed;
        const auto isDrawn = [&] { return printed.append(program.readAll()).contains("Drawing"); };
        QVERIFY(QTest::qWaitFor(isDrawn, maxMs));
        QVERIFY(printed.contains("no sound until the next start"));
        program.terminate(); // which the station does not handle
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), SIGTERM);
    }

    void stopsInTheMiddleOfARun_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("killed") << SIGKILL;
        QTest::newRow("stopped") << SIGSTOP;
        QTest::newRow("suspended") << 0;
    }

    /// Each window is heard, also after one whose server stopped.
    void stopsInTheMiddleOfARun()
    {
        QFETCH(int, signal);
        const PulseAudio server(card);
        auto window = std::make_unique<MainWindow>();
        Q_EMIT window->signal_Ding();
        QVERIFY(QTest::qWaitFor([&] { return server.isHeard(); }, maxMs));
        if (signal != 0)
            server.signal(signal);
        else
            server.suspendSink();
        QVERIFY(isRunComplete(*window));
        QElapsedTimer timer;
        timer.start();
        window.reset();
        QVERIFY(timer.elapsed() < maxMs);
    }
};

QTEST_MAIN(TestSoundServer)
#include "test_soundserver.moc"
