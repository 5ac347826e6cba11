// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/audio/expectedsound.h"

#include <QCoreApplication>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>

const Request beep{
    &AudioEngine::slot_Beep,
    {{"Beep", 0, 100 / 127.0}, {"Click", -1, 100 / 127.0}, {"Bell", -2, 100 / 127.0}}};
const Request click{&AudioEngine::slot_Click, {{"Click", 0, 20 / 127.0}, {"Bell", -1, 20 / 127.0}}};
const Request bell{&AudioEngine::slot_Ding, {{"Bell", 0, 50 / 127.0}}};

std::vector<double> soundSamples(const QString& sound)
{
    QFile file(QStringLiteral("%1/Zorvi_AssemblyTest_%2.wav")
                   .arg(QCoreApplication::applicationDirPath(), sound));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no sound file %s", qPrintable(file.fileName()));
    const QByteArray samples = file.readAll().mid(44); // behind the plain 16-bit header
    std::vector<double> result;
    for (int i = 0; i + 1 < samples.size(); i += 2)
        result.push_back(qFromLittleEndian<qint16>(samples.constData() + i) / 32768.0);
    return result;
}

std::vector<double> samplesOf(const Request& request, double rate)
{
    std::vector<double> mix;
    for (const Layer& layer : request.layers) {
        const std::vector<double> file = soundSamples(layer.sound);
        const double step = std::exp2(layer.semitones / 12.0) * fileRate / rate;
        // The sampler counts the attack in samples of the file's rate, whatever the device's is.
        const double attack = (layer.sound == "Click" ? 0.01 : 0.005) * fileRate;
        for (std::size_t i = 0;; ++i) {
            const double position = static_cast<double>(i) * step;
            const auto before = static_cast<std::size_t>(position);
            if (before + 1 >= file.size())
                break;
            const double share = position - static_cast<double>(before);
            const double sample = file[before] * (1.0 - share) + file[before + 1] * share;
            mix.resize(std::max(mix.size(), i + 1));
            mix[i] += layer.level * std::min(1.0, static_cast<double>(i + 1) / attack) * sample;
        }
    }
    return mix;
}

double distance(const std::vector<double>& a, const std::vector<double>& b)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i)
        largest =
            std::max(largest, std::abs((i < a.size() ? a[i] : 0.0) - (i < b.size() ? b[i] : 0.0)));
    return largest;
}

double peak(const std::vector<double>& samples)
{
    return distance(samples, {});
}
