// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundfiles.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <QCoreApplication>

#include <algorithm>

namespace
{
QString pathOf(const QString& directory, Sound sound)
{
    switch (sound) {
    case Sound::Beep:
        return directory + QStringLiteral("/Zorvi_AssemblyTest_Beep.wav");
    case Sound::Click:
        return directory + QStringLiteral("/Zorvi_AssemblyTest_Click.wav");
    case Sound::Bell:
        break;
    }
    return directory + QStringLiteral("/Zorvi_AssemblyTest_Bell.wav");
}

juce::File fileOf(const QString& path)
{
    return juce::File(path.toStdString());
}

/// How many samples a file can hold. Its header says more if it was written to a stream, or if the
/// file was cut.
juce::int64 samplesInFile(const juce::AudioFormatReader& reader, const QString& path)
{
    constexpr juce::int64 smallestHeader = 44; // RIFF 12, fmt 24, data 8 bytes
    const juce::int64 bytesPerSample =
        static_cast<juce::int64>(reader.numChannels) * reader.bitsPerSample / 8;
    return (fileOf(path).getSize() - smallestHeader) /
           std::max(bytesPerSample, static_cast<juce::int64>(1));
}

QString problemOf(const QString& directory, Sound sound)
{
    const QString path = pathOf(directory, sound);
    if (!fileOf(path).existsAsFile())
        return QCoreApplication::translate("SoundFiles", "The sound file %1 is missing.").arg(path);
    const auto reader = openSound(directory, sound);
    if (reader == nullptr)
        return QCoreApplication::translate("SoundFiles", "The sound file %1 cannot be read as WAV.")
            .arg(path);
    if (reader->lengthInSamples <= 0)
        return QCoreApplication::translate("SoundFiles", "The sound file %1 is incomplete.")
            .arg(path);
    return {};
}
} // namespace

std::unique_ptr<juce::AudioFormatReader> openSound(const QString& directory, Sound sound)
{
    const QString path = pathOf(directory, sound);
    auto stream = std::make_unique<juce::FileInputStream>(fileOf(path));
    if (stream->failedToOpen())
        return nullptr;
    std::unique_ptr<juce::AudioFormatReader> reader(
        juce::WavAudioFormat().createReaderFor(stream.release(), true));
    if (reader != nullptr)
        reader->lengthInSamples = std::min(reader->lengthInSamples, samplesInFile(*reader, path));
    return reader;
}

QString soundFileProblem(const QString& directory)
{
    for (const Sound sound : {Sound::Beep, Sound::Click, Sound::Bell}) {
        QString problem = problemOf(directory, sound);
        if (!problem.isEmpty())
            return problem;
    }
    return {};
}
