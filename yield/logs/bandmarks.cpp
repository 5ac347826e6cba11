// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/bandmarks.h"

#include <QtEndian>

#include <array>
#include <cstring>

namespace
{
// Marks are packed as words of eight bytes, because bit by bit they take a fifth of a report's
// time.
constexpr int wordCount = (bandMarkCount + 63) / 64;
constexpr int wordSize = 8;
using Words = std::array<char, wordCount * wordSize>;
} // namespace

QByteArray bandmarks::packed(const BandMarks& marks)
{
    const BandMarks lowest(~quint64{0});
    Words words;
    for (int word = 0; word < wordCount; ++word)
        qToLittleEndian<quint64>(
            ((marks >> static_cast<std::size_t>(64 * word)) & lowest).to_ullong(),
            &words[static_cast<std::size_t>(wordSize * word)]);
    return {words.data(), packedSize};
}

BandMarks bandmarks::unpacked(const QByteArray& bytes)
{
    Words words{};
    std::memcpy(words.data(), bytes.constData(), packedSize);
    BandMarks marks;
    for (int word = wordCount - 1; word >= 0; --word)
        marks = marks << 64 | BandMarks(qFromLittleEndian<quint64>(
                                  &words[static_cast<std::size_t>(wordSize * word)]));
    return marks;
}
