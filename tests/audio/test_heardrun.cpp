// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "tests/audio/expectedsound.h"
#include "tests/support/station.h"

#include <QCheckBox>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

namespace
{
Samples fromItsBegin(const Samples& sound)
{
    return {std::find_if(sound.begin(), sound.end(), [](double sample) { return sample != 0.0; }),
            sound.end()};
}
} // namespace

/// A run of the real window, heard on the sound device that it opens. Its end is a pipe, and it
/// plays as fast as that is read: nothing is lost, however busy the machine is.
class TestHeardRun : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QTemporaryDir folder;
    const QByteArray pipePath = folder.filePath("pipe").toLocal8Bit();
    int pipe = -1;
    std::unique_ptr<MainWindow> window;

    void makeDefaultDevice(const QByteArray& definition)
    {
        QFile alsa(folder.filePath(".asoundrc"));
        QVERIFY(alsa.open(QIODevice::WriteOnly));
        alsa.write("pcm.!default {" + definition + "}\n");
    }

    /// What was played next, on the left channel; less where nothing comes for ten seconds.
    Samples read(std::size_t samples) const
    {
        Samples left;
        float frames[1024];
        for (pollfd ready{pipe, POLLIN, 0}; left.size() < samples && poll(&ready, 1, 10000) > 0;) {
            const auto bytes = ::read(pipe, frames, sizeof frames);
            if (bytes <= 0)
                break;
            for (std::size_t i = 0; i < static_cast<std::size_t>(bytes) / sizeof(float); i += 2)
                left.push_back(frames[i]);
        }
        return left;
    }

    void send(int component) const
    {
        for (const auto& message : passingMessages(component))
            window->handleIncomingMidiMessage(nullptr, message);
    }

    /// Whether these requests and nothing else are heard until all has rung out; a few blocks may
    /// lie between two of them.
    bool hears(const QByteArray& requests) const
    {
        const Samples heard = fromItsBegin(read(90000));
        for (std::size_t delay = 0; delay < 64 * 512; delay += 512) {
            std::vector<Begin> begins;
            for (const char request : requests)
                begins.push_back({request, begins.empty() ? 0 : delay});
            if (distance(heard, fromItsBegin(mixOf(begins))) < inaudible)
                return true;
        }
        return false;
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("HOME", folder.path().toLocal8Bit());
        QCOMPARE(mkfifo(pipePath, S_IRUSR | S_IWUSR), 0);
        pipe = open(pipePath, O_RDONLY | O_NONBLOCK);
        makeDefaultDevice("type asym capture.pcm null playback.pcm { type file format raw "
                          "slave.pcm null file \"" +
                          pipePath + "\" }");
    }

    void init() { window = std::make_unique<MainWindow>(); }

    /// The pipe is read meanwhile: the device closes when it has got rid of its last block.
    void cleanup()
    {
        std::thread reader([this] {
            while (!read(1).empty()) {
            }
        });
        window.reset();
        reader.join();
    }

    /// A click for each band, and a bell for each control.
    void everyRequestIsHeard()
    {
        for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
            auto messages = passingMessages(c);
            if (c == roster::powerButton || c == roster::channelButton)
                messages.clear();
            while (!messages.isEmpty()) {
                window->handleIncomingMidiMessage(nullptr, messages.takeFirst());
                QVERIFY2(hears(messages.isEmpty() ? "cd" : "c"),
                         qPrintable(QString("component %1, %2 left").arg(c).arg(messages.size())));
            }
        }
    }

    void earlyTouchBeeps()
    {
        send(1);
        QVERIFY(hears("b"));
    }

    void signalsOfTheWindow()
    {
        Q_EMIT window->signal_Click();
        QVERIFY(hears("c"));
        Q_EMIT window->signal_Ding();
        QVERIFY(hears("d"));
        Q_EMIT window->signal_Beep();
        QVERIFY(hears("b"));
    }

    void checkBoxSwitchesTheSound()
    {
        auto* audioOnOff = window->findChild<QCheckBox*>("audioOnOff");
        QVERIFY(audioOnOff->isChecked());
        audioOnOff->click();
        send(0);
        QVERIFY(hears(""));
        audioOnOff->click();
        Q_EMIT window->signal_Ding();
        QVERIFY(hears("d"));
    }

    /// The sound is let go before anything of it is deleted, or it crashes sooner or later.
    void windowsGoWhileTheyPlay()
    {
        for (int i = 0; i < 12; ++i) {
            cleanup();
            init();
            Q_EMIT window->signal_Ding();
        }
    }

    /// The run goes on without the sound server, which ends with this process if not before.
    void serverGoesAway()
    {
        if (QStandardPaths::findExecutable("pulseaudio").isEmpty())
            QSKIP("needs PulseAudio and ALSA's plugin for it");
        cleanup();
        QProcess server;
        const QString socket = folder.filePath("native");
        qputenv("XDG_RUNTIME_DIR", folder.path().toLocal8Bit());
        qputenv("PULSE_SERVER", "unix:" + socket.toLocal8Bit());
        makeDefaultDevice("type pulse");
        server.start("setpriv",
                     {"--pdeathsig", "KILL", "pulseaudio", "-n", "--daemonize=no",
                      "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes", "-L",
                      "module-pipe-sink format=float32le channels=2 file=" + pipePath, "-L",
                      "module-native-protocol-unix socket=" + socket});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(socket), 30000);
        std::atomic<bool> isHeard{false};
        std::thread listener([&] {
            for (Samples next = read(512); !next.empty(); next = read(512))
                isHeard = isHeard || peak(next) > 0.05;
        });
        init();
        send(0);
        const bool wasHeard = QTest::qWaitFor([&] { return isHeard.load(); }, 60000);
        server.kill();
        listener.join();
        QVERIFY(wasHeard && server.waitForFinished());
        const QSignalSpy armed(window.get(), &MainWindow::signal_QueueComponent);
        for (int c = 1; c < roster::lastComponent; ++c)
            send(c);
        QCOMPARE(armed.last().at(0).toInt(), roster::lastComponent);
    }
};

QTEST_MAIN(TestHeardRun)
#include "test_heardrun.moc"
