// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/bandmarks.h"

#include <QtEndian>

#include <array>
#include <cstring>

namespace
{
// Packed and unpacked in words: bit by bit takes a fifth of a report's time.
constexpr std::size_t wordBits = 64;
constexpr std::size_t wordBytes = 8;
constexpr std::size_t wordCount = (bandMarkCount + wordBits - 1) / wordBits;
using Words = std::array<char, wordCount * wordBytes>;
} // namespace

QByteArray bandmarks::packed(const BandMarks& marks)
{
    const BandMarks lowestWord(~quint64{0});
    Words words{};
    for (std::size_t word = 0; word < wordCount; ++word)
        qToLittleEndian<quint64>((marks >> wordBits * word & lowestWord).to_ullong(),
                                 &words[wordBytes * word]);
    return {words.data(), packedSize};
}

BandMarks bandmarks::unpacked(const QByteArray& bytes)
{
    Words words{};
    std::memcpy(words.data(), bytes.constData(), packedSize);
    BandMarks marks;
    for (std::size_t word = wordCount; word-- > 0;)
        marks = marks << wordBits | BandMarks(qFromLittleEndian<quint64>(&words[wordBytes * word]));
    return marks;
}
