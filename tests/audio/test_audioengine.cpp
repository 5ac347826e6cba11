// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "audio/beepdebounce.h"
#include "audio/soundfiles.h"
#include "tests/support/station.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include <sys/time.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker gives these names.
/// Of each thread. The linker puts these functions in the place of the C library's.
static thread_local int allocations = 0;
extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size)
{
    ++allocations;
    return __real_malloc(size);
}
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size)
{
    ++allocations;
    return __real_realloc(memory, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{
// What requests are to sound like: the library's sampler plays each layer alone, and the layers are
// added up.

using Samples = std::vector<float>;

constexpr double fileRate = 44100.0;
constexpr float inaudible = 0.001F;

enum class Request { None, Beep, Click, Bell };

/// A request and the device's sample at which it begins.
struct Begin {
    Request request;
    int at = 0;
};

struct Layer {
    Request request;
    const char* sound;
    int semitones; ///< Up from the file's own pitch.
    float level;
    double fadeSeconds; ///< At its start, and when it is stopped.
};
constexpr Layer layers[] = {{Request::Beep, "Beep", 0, 100 / 127.0F, 0.005},
                            {Request::Beep, "Click", -1, 100 / 127.0F, 0.01},
                            {Request::Beep, "Bell", -2, 100 / 127.0F, 0.005},
                            {Request::Click, "Click", 0, 20 / 127.0F, 0.01},
                            {Request::Click, "Bell", -1, 20 / 127.0F, 0.005},
                            {Request::Bell, "Bell", 0, 50 / 127.0F, 0.005}};

/// "Beep", "Click" or "Bell": the file beside the test.
QString soundPath(const QString& sound)
{
    return QCoreApplication::applicationDirPath() + "/Zorvi_AssemblyTest_" + sound + ".wav";
}

/// Adds a layer that begins at a sample and is stopped at a later one. Of a file the first ten
/// seconds are played.
void add(Samples& mix, const Layer& layer, int begin, int stop, double rate)
{
    constexpr int note = 60;
    constexpr double maxSeconds = 10.0;
    const juce::File file(soundPath(layer.sound).toStdString());
    const std::unique_ptr<juce::AudioFormatReader> reader(
        juce::WavAudioFormat().createReaderFor(file.createInputStream().release(), true));
    juce::BigInteger notes;
    notes.setRange(0, 2 * note, true);
    juce::Synthesiser sampler;
    sampler.addVoice(new juce::SamplerVoice);
    sampler.addSound(new juce::SamplerSound({}, *reader, notes, note, layer.fadeSeconds,
                                            layer.fadeSeconds, maxSeconds));
    sampler.setCurrentPlaybackSampleRate(rate);

    const double seconds = std::min(maxSeconds, static_cast<double>(file.getSize()) / fileRate);
    const int length = static_cast<int>(1.2 * seconds * rate); // lower notes take longer
    juce::AudioBuffer<float> buffer(1, length);
    buffer.clear();
    sampler.noteOn(1, note + layer.semitones, layer.level);
    const int untilStop = std::min(length, stop - begin);
    sampler.renderNextBlock(buffer, {}, 0, untilStop);
    sampler.noteOff(1, note + layer.semitones, 0.0F, true);
    if (untilStop < length)
        sampler.renderNextBlock(buffer, {}, untilStop, length - untilStop);
    mix.resize(std::max(mix.size(), static_cast<std::size_t>(begin + length)));
    juce::FloatVectorOperations::add(&mix[static_cast<std::size_t>(begin)],
                                     buffer.getReadPointer(0), length);
}

/// All requests together on a device of that rate in Hz. A request stops the one like it.
Samples mixOf(const std::vector<Begin>& requests, double rate = fileRate)
{
    Samples mix;
    for (auto begin = requests.begin(); begin != requests.end(); ++begin) {
        const auto next = std::find_if(begin + 1, requests.end(), [&](const Begin& later) {
            return later.request == begin->request;
        });
        for (const Layer& layer : layers)
            if (layer.request == begin->request)
                add(mix, layer, begin->at, next == requests.end() ? INT_MAX : next->at, rate);
    }
    return mix;
}

float peak(const Samples& samples)
{
    float largest = 0.0F;
    for (const float sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

/// How far two sounds are apart; what lies after the end of either is silence.
float distance(Samples a, const Samples& b)
{
    a.resize(std::max(a.size(), b.size()));
    for (std::size_t i = 0; i < b.size(); ++i)
        a[i] -= b[i];
    return peak(a);
}

int allocationsInBlocks = 0;

/// What the engine plays on the last channel, in whole blocks, after what was heard before.
Samples play(AudioEngine& engine, std::size_t samples, int blockSize = 512, int channels = 2,
             Samples heard = {})
{
    juce::AudioBuffer<float> buffer(channels, blockSize);
    for (samples += heard.size(); heard.size() < samples;) {
        for (int channel = 0; channel < channels; ++channel) // must not be heard
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), 0.7F, blockSize);
        const int before = allocations;
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        allocationsInBlocks += allocations - before;
        const float* last = buffer.getReadPointer(channels - 1);
        heard.insert(heard.end(), last, last + blockSize);
    }
    return heard;
}

void ask(AudioEngine& engine, Request request)
{
    if (request == Request::Beep)
        engine.slot_Beep();
    else if (request == Request::Click)
        engine.slot_Click();
    else if (request == Request::Bell)
        engine.slot_Ding();
}

void write(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(contents);
}

using Requests = QVector<Request>;
} // namespace

/// The engine alone: no device, its blocks are asked for by the test.
class TestAudioEngine : public QObject
{
    Q_OBJECT

    std::unique_ptr<AudioEngine> engine;

private Q_SLOTS:
    void init()
    {
        engine = std::make_unique<AudioEngine>();
        engine->prepareToPlay(512, fileRate);
    }

    /// Three requests for one block are one, and a block without a buffer leaves them be.
    void requestsSoundInLayers()
    {
        struct Row {
            const char* name;
            Requests requests; ///< One for each block.
            double rate = fileRate;
            int blockSize = 512;
            int channels = 2;
            bool allHeard = true;
        };
        const Request none = Request::None;
        const Request beep = Request::Beep;
        const Request click = Request::Click;
        const Request bell = Request::Bell;
        Requests sweep;
        for (int i = 0; i < 6; ++i)
            sweep << none << none << click;
        const Row rows[] = {
            {"a note stops the one like it alone", {bell, click, beep, click, bell}},
            {"blocks of one sample", {click}, fileRate, 1, 1},
            {"48 kHz", {beep}, 48000, 480},
            {"a rate that is truncated", {bell}, 8000.9, 8192},
            {"a fader swept in half a second",
             Requests{bell} + sweep + Requests{beep, bell, click} + sweep + Requests{bell}},
            // Stopped notes keep their voices, of which there are 39, until their samples end: a
            // bell request one, a click request one for its bell. The beep at the end finds two for
            // its layers and takes that of the stopped click;
            {"two voices left", Requests{click, click} + Requests(35, bell) + Requests{beep}},
            // here also the other click's.
            {"one voice left", Requests{click, click} + Requests(36, bell) + Requests{beep},
             fileRate, 512, 2, false},
            {"stopped bells alone", Requests(60, bell) + Requests{beep}},
            {"the bell rings on", Requests{bell} + Requests(45, click) + Requests{beep}},
        };
        for (const auto& [name, requests, rate, blockSize, channels, allHeard] : rows) {
            init();
            engine->prepareToPlay(blockSize, rate);
            std::vector<Begin> begins;
            Samples heard = play(*engine, 1000, blockSize, channels);
            QCOMPARE(peak(heard), 0.0F);
            for (const Request request : requests) {
                for (int i = 0; i < 3; ++i)
                    ask(*engine, request);
                engine->getNextAudioBlock({nullptr, 0, blockSize});
                begins.push_back({request, static_cast<int>(heard.size())});
                heard = play(*engine, 1, blockSize, channels, heard);
            }
            const auto expected = mixOf(begins, std::floor(rate));
            heard = play(*engine, expected.size(), blockSize, channels, heard);
            QVERIFY2((distance(heard, expected) < inaudible) == allHeard, name);
            QVERIFY2(peak(heard) > 50 * inaudible && peak(heard) < 1.0F, name);
        }
        QVERIFY(allocations > 0); // those of the construction
        QCOMPARE(allocationsInBlocks, 0);
    }

    /// Off silences at once and drops requests; on goes on where the bell stood.
    void offAndOn()
    {
        engine->slot_Ding();
        const auto begin = play(*engine, 10000);
        engine->slot_Beep();
        engine->slot_SetAudioOnOff(false);
        engine->slot_Click();
        engine->slot_Ding();
        QCOMPARE(peak(play(*engine, 10000)), 0.0F);
        engine->slot_SetAudioOnOff(true);
        QVERIFY(distance(play(*engine, 60000, 512, 2, begin), mixOf({{Request::Bell}})) <
                inaudible);
    }

    void blockIsClearedFromItsStartButRenderedFromZero()
    {
        juce::AudioBuffer<float> buffer(1, 1200);
        juce::FloatVectorOperations::fill(buffer.getWritePointer(0), 0.5F, 1200);
        engine->slot_Ding();
        engine->getNextAudioBlock({&buffer, 600, 400});
        auto expected = mixOf({{Request::Bell}});
        expected.resize(400);
        expected.resize(1200);
        for (std::size_t i = 0; i < 1200; ++i)
            expected[i] += i >= 600 && i < 1000 ? 0.0F : 0.5F;
        const float* left = buffer.getReadPointer(0);
        QVERIFY(distance({left, left + 1200}, expected) < inaudible);
    }

    /// The timer's signals interrupt the engine, which looks at its requests for many milliseconds
    /// after it has cleared so long a block.
    void requestRaisedDuringTheBlock()
    {
        juce::AudioBuffer<float> buffer(1, 1 << 24);
        juce::FloatVectorOperations::fill(buffer.getWritePointer(0), 1.0F, 1 << 24);
        static const volatile float* last = buffer.getReadPointer(0) + (1 << 24) - 1;
        static AudioEngine* playing = engine.get();
        std::signal(SIGALRM, [](int) {
            if (*last == 0.0F)
                playing->slot_Ding();
        });
        itimerval timer{{0, 1000}, {0, 1000}}; // every millisecond
        setitimer(ITIMER_REAL, &timer, nullptr);
        engine->getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
        timer = {};
        setitimer(ITIMER_REAL, &timer, nullptr);
        QVERIFY(buffer.getMagnitude(0, 4096) > 0.05F);
    }

    /// What the station's threads do to the engine, for the thread sanitizer to look at.
    void threads()
    {
        std::thread audio([this] { play(*engine, 500000); });
        for (int i = 0; i < 60000; ++i) {
            ask(*engine, static_cast<Request>(1 + i % 3));
            engine->slot_SetAudioOnOff(i % 64 != 0);
        }
        audio.join();
        engine->slot_Ding();
        QVERIFY(peak(play(*engine, 4096)) > 0.05F);
    }

    void debounce()
    {
        QCOMPARE(decideBeep(true, 500), BeepDecision::Drop);
        QCOMPARE(decideBeep(true, 501), BeepDecision::Rearm);
        const auto isHeard = [this] {
            engine->slot_Beep();
            return peak(play(*engine, 70000)) > 0.1F;
        };
        QVERIFY(isHeard());
        QVERIFY(!isHeard());
        QTest::qWait(520);                 // the pause itself is what is tested
        QVERIFY(!isHeard());               // the first after the pause
        QVERIFY(isHeard());                // from here the time is counted anew,
        QVERIFY(QTest::qWaitFor(isHeard)); // but not from those that are dropped meanwhile
    }

    /// A sound file that cannot be played is named.
    void soundFiles()
    {
        const QByteArray sound = station::contentOf(soundPath("Bell"));
        QByteArray promisesNone = sound;
        promisesNone.replace(40, 4, QByteArray(4, '\0'));
        const QTemporaryDir folder;
        for (const QString name : {"Beep", "Click", "Bell"}) {
            const QString path = folder.filePath("Zorvi_AssemblyTest_" + name + ".wav");
            QCOMPARE(soundFileProblem(folder.path()), "The sound file " + path + " is missing.");
            for (const auto& contents : {QByteArray(), QByteArray(5000, 'x'), sound.left(20),
                                         sound.left(44), promisesNone}) {
                write(path, contents);
                QVERIFY(soundFileProblem(folder.path()).contains(path));
            }
            write(path, sound);
        }
        QCOMPARE(soundFileProblem(folder.path()), QString());
    }
};

QTEST_GUILESS_MAIN(TestAudioEngine)
#include "test_audioengine.moc"
