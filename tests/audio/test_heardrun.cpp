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

    /// Whether this request and nothing else is heard until all has rung out.
    bool hears(Request request) const
    {
        Samples left;
        while (left.size() < 90000) {
            const auto frames = played();
            if (frames.empty())
                return false;
            for (std::size_t i = 0; i < frames.size(); i += 2)
                left.push_back(frames[i]);
        }
        return distance(fromItsBegin(left), fromItsBegin(mixOf({{request}}))) < inaudible;
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

    void panels()
    {
        station::receive(*window, {passingMessages(0).first()});
        QVERIFY(hears(Request::Click));
        station::receive(*window, passingMessages(1));
        QVERIFY(hears(Request::Beep));
    }

    void signalsAndSwitchOfTheWindow()
    {
        Q_EMIT window->signal_Click();
        QVERIFY(hears(Request::Click));
        Q_EMIT window->signal_Beep();
        QVERIFY(hears(Request::Beep));
        station::click(*window, "audioOnOff");
        Q_EMIT window->signal_Ding();
        QVERIFY(hears(Request::None));
        station::click(*window, "audioOnOff");
        Q_EMIT window->signal_Ding();
        QVERIFY(hears(Request::Bell));
    }
};

QTEST_MAIN(TestHeardRun)
#include "test_heardrun.moc"
