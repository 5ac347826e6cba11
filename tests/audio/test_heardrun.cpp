// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/audio/expectedsound.h"
#include "tests/support/soundcard.h"
#include "tests/support/station.h"

#include <QtTest>

#include <thread>

namespace
{
Samples fromItsBegin(const Samples& sound)
{
    return {std::find_if(sound.begin(), sound.end(), [](double sample) { return sample != 0.0; }),
            sound.end()};
}
} // namespace

/// The real window, heard on the sound device that it opens: nothing is lost, however busy the
/// machine is.
class TestHeardRun : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const SoundCard card;
    std::unique_ptr<MainWindow> window;

    /// Whether these requests and nothing else are heard until all has rung out; a few blocks may
    /// lie between two of them.
    bool hears(const std::vector<Request>& requests) const
    {
        Samples left;
        while (left.size() < 90000) {
            const auto frames = card.read();
            if (frames.empty())
                return false;
            for (std::size_t i = 0; i < frames.size(); i += 2)
                left.push_back(frames[i]);
        }
        for (std::size_t delay = 0; delay < 64 * 512; delay += 512) {
            std::vector<Begin> begins;
            for (const Request request : requests)
                begins.push_back({request, begins.empty() ? 0 : delay});
            if (distance(fromItsBegin(left), fromItsBegin(mixOf(begins))) < inaudible)
                return true;
        }
        return false;
    }

private Q_SLOTS:
    void initTestCase() { station::quiet(); }
    void init() { window = std::make_unique<MainWindow>(); }

    /// The pipe is read meanwhile: the device closes when it has got rid of its last block.
    void cleanup()
    {
        std::thread reader([this] {
            while (!card.read().empty()) {
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
