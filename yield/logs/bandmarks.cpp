// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/bandmarks.h"

#include <QBitArray>
#include <QtEndian>

#include <array>
#include <cstring>

QByteArray bandmarks::packed(const BandMarks& marks)
{
    QBitArray bits(bandMarkCount);
    for (std::size_t mark = 0; mark < marks.size(); ++mark)
        bits.setBit(static_cast<int>(mark), marks[mark]);
    return {bits.bits(), packedSize};
}

BandMarks bandmarks::unpacked(const QByteArray& bytes)
{
    // In words: bit by bit takes a fifth of a report's time.
    constexpr std::size_t wordBits = 64;
    std::array<quint64, (bandMarkCount + wordBits - 1) / wordBits> words{};
    std::memcpy(words.data(), bytes.constData(), packedSize);
    BandMarks marks;
    for (auto word = words.crbegin(); word != words.crend(); ++word)
        marks = marks << wordBits | BandMarks(qFromLittleEndian(*word));
    return marks;
}
