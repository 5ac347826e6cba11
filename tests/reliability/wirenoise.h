// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <QByteArray>

#include <random>

/// Bytes as a broken unit, a bad cable or another device may put them on the wire. The same seed
/// gives the same noise.
class WireNoise
{
public:
    explicit WireNoise(unsigned int seed)
        : engine(seed)
    {
    }

    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(engine); }

    /// At least one byte, of every kind in turn: messages with every status and too few or too many
    /// data bytes, bare data, what the unit itself may send, and now and then system exclusive.
    QByteArray bytes()
    {
        switch (below(8)) {
        case 0:
            return below(50) == 0 ? systemExclusive(65536) : systemExclusive(64);
        case 1:
            return random(1 + below(12));
        case 2:
            return withRealTime(message(0x80 + below(0x80), below(4)));
        case 3:
            return message(0x80 + below(0x80), below(4));
        default:
            return unitMessage();
        }
    }

    /// A note or controller message that a panel may take for its own.
    QByteArray unitMessage()
    {
        static const int kinds[] = {0x80, 0x90, 0xB0};
        const int status = kinds[below(3)] + below(16);
        const char data[] = {static_cast<char>(status), static_cast<char>(below(34)),
                             static_cast<char>(below(3) == 0 ? 127 * below(2) : below(128))};
        return {data, 3};
    }

    /// Whole, cut off, without its end, or with status and real-time bytes inside; up to that many
    /// bytes long.
    QByteArray systemExclusive(int longest)
    {
        QByteArray bytes(1, '\xF0');
        for (int rest = below(longest); rest > 0; --rest)
            bytes += static_cast<char>(below(0x80));
        switch (below(4)) {
        case 0:
            return bytes; // no end
        case 1:
            bytes.insert(below(bytes.size()) + 1, static_cast<char>(0x80 + below(0x80)));
            return bytes + '\xF7';
        case 2:
            return withRealTime(bytes + '\xF7');
        default:
            return bytes + '\xF7';
        }
    }

private:
    QByteArray random(int size)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(below(0x100));
        return bytes;
    }

    QByteArray message(int status, int dataBytes)
    {
        QByteArray bytes(1, static_cast<char>(status));
        for (int i = 0; i < dataBytes; ++i)
            bytes += static_cast<char>(below(0x80));
        return bytes;
    }

    QByteArray withRealTime(QByteArray bytes)
    {
        return bytes.insert(1 + below(bytes.size()), static_cast<char>(0xF8 + below(8)));
    }

    std::mt19937 engine;
};
