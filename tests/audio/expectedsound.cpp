// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "expectedsound.h"

#include <QCoreApplication>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double fileRate = 44100.0;
constexpr double beepLevel = 100.0 / 127.0;
constexpr double clickLevel = 20.0 / 127.0;
constexpr double bellLevel = 50.0 / 127.0;
} // namespace

std::vector<Layer> beepLayers()
{
    return {{"Beep", 0, beepLevel}, {"Click", -1, beepLevel}, {"Bell", -2, beepLevel}};
}

std::vector<Layer> clickLayers()
{
    return {{"Click", 0, clickLevel}, {"Bell", -1, clickLevel}};
}

std::vector<Layer> bellLayers()
{
    return {{"Bell", 0, bellLevel}};
}

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

std::vector<double> layerSamples(const Layer& layer, double rate)
{
    const std::vector<double> file = soundSamples(layer.sound);
    const double step = std::exp2(layer.semitones / 12.0) * fileRate / rate;
    // The sampler counts the attack in samples of the file's rate, whatever the device's is.
    const double attack = (layer.sound == "Click" ? 0.01 : 0.005) * fileRate;
    std::vector<double> result;
    for (std::size_t i = 0;; ++i) {
        const double position = static_cast<double>(i) * step;
        const auto before = static_cast<std::size_t>(position);
        if (before + 1 >= file.size())
            return result;
        const double share = position - static_cast<double>(before);
        const double sample = file[before] * (1.0 - share) + file[before + 1] * share;
        const double envelope = std::min(1.0, static_cast<double>(i + 1) / attack);
        result.push_back(layer.level * envelope * sample);
    }
}

std::vector<double> mixedSamples(const std::vector<Layer>& layers, double rate)
{
    std::vector<double> mix;
    for (const Layer& layer : layers) {
        const std::vector<double> samples = layerSamples(layer, rate);
        mix.resize(std::max(mix.size(), samples.size()));
        for (std::size_t i = 0; i < samples.size(); ++i)
            mix[i] += samples[i];
    }
    return mix;
}
