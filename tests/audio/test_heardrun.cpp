// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/audio/expectedsound.h"
#include "tests/support/station.h"

#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
Samples fromItsBegin(const Samples& sound)
{
    return {std::find_if(sound.begin(), sound.end(), [](double sample) { return sample != 0.0; }),
            sound.end()};
}
} // namespace

/// The real window and ALSA's default device, on every machine: what is played goes into a pipe,
/// and reading it sets the pace, so that nothing is lost.
class TestHeardRun : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QTemporaryDir home;
    int pipe = -1;
    std::unique_ptr<MainWindow> window;

    /// What was played next, channel by channel; empty once the device is closed, or where nothing
    /// comes for ten seconds.
    std::vector<float> played() const
    {
        std::vector<float> frames(1024);
        pollfd ready{pipe, POLLIN, 0};
        poll(&ready, 1, 10000);
        const auto bytes = read(pipe, frames.data(), frames.size() * sizeof(float));
        frames.resize(bytes < 0 ? 0 : static_cast<std::size_t>(bytes) / sizeof(float));
        return frames;
    }

    /// Whether these requests and nothing else are heard until all has rung out; a few blocks may
    /// lie between two of them.
    bool hears(const std::vector<Request>& requests) const
    {
        Samples left;
        while (left.size() < 90000) {
            const auto frames = played();
            if (frames.empty())
                return false;
            for (std::size_t i = 0; i < frames.size(); i += 2)
                left.push_back(frames[i]);
        }
        for (int delay = 0; delay < 64 * 512; delay += 512) {
            std::vector<Begin> begins;
            for (const Request request : requests)
                begins.push_back({request, begins.empty() ? 0 : delay});
            if (distance(fromItsBegin(left), fromItsBegin(mixOf(begins))) < inaudible)
                return true;
        }
        return false;
    }

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        const QByteArray path = QFile::encodeName(home.filePath("pipe"));
        mkfifo(path, S_IRUSR | S_IWUSR);
        pipe = open(path, O_RDONLY | O_NONBLOCK);
        qputenv("HOME", QFile::encodeName(home.path())); // where ALSA looks
        QFile alsa(home.filePath(".asoundrc"));
        QVERIFY(alsa.open(QIODevice::WriteOnly));
        alsa.write("pcm.!default { type asym capture.pcm null playback.pcm { type file format raw "
                   "slave.pcm null file \"" +
                   path + "\" } }\n");
    }
    void init() { window = std::make_unique<MainWindow>(); }

    /// The pipe is read meanwhile: the device closes when it has got rid of its last block.
    void cleanup()
    {
        std::thread reader([this] {
            while (!played().empty()) {
            }
        });
        window.reset();
        reader.join();
    }

    /// A beep for a control that is not its turn, a click for each band and a bell for each
    /// control.
    void everyRequestIsHeard()
    {
        const std::vector<Request> band{Request::Click};
        const std::vector<Request> passed{Request::Click, Request::Bell};
        station::receive(*window, passingMessages(1));
        QVERIFY(hears({Request::Beep}));
        for (int c = 0; c <= 43; ++c) {
            auto messages = passingMessages(c);
            while (c != 18 && c != 39 && !messages.isEmpty()) {
                station::receive(*window, {messages.takeFirst()});
                QVERIFY2(hears(messages.isEmpty() ? passed : band),
                         qPrintable(QString("component %1, %2 left").arg(c).arg(messages.size())));
            }
        }
    }

    void signalsAndSwitchOfTheWindow()
    {
        Q_EMIT window->signal_Click();
        QVERIFY(hears({Request::Click}));
        Q_EMIT window->signal_Beep();
        QVERIFY(hears({Request::Beep}));
        station::click(*window, "audioOnOff");
        Q_EMIT window->signal_Ding();
        QVERIFY(hears({}));
        station::click(*window, "audioOnOff");
        Q_EMIT window->signal_Ding();
        QVERIFY(hears({Request::Bell}));
    }
};

QTEST_MAIN(TestHeardRun)
#include "test_heardrun.moc"
