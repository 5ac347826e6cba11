// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/bandmarks.h"

#include <QBitArray>

QByteArray bandmarks::packed(const BandMarks& marks)
{
    QBitArray bits(bandMarkCount);
    for (int i = 0; i < bandMarkCount; ++i)
        bits[i] = marks[static_cast<std::size_t>(i)];
    return {bits.bits(), packedSize};
}

std::optional<BandMarks> bandmarks::unpacked(const QByteArray& bytes)
{
    if (bytes.size() != packedSize)
        return std::nullopt;
    const auto byteOf = [&](int mark) { return static_cast<unsigned char>(bytes[mark / 8]); };
    if (byteOf(bandMarkCount) >> bandMarkCount % 8 != 0) // it has bits behind the last mark
        return std::nullopt;
    BandMarks marks;
    for (int i = 0; i < bandMarkCount; ++i)
        marks[static_cast<std::size_t>(i)] = (byteOf(i) >> i % 8 & 1) != 0;
    return marks;
}
