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

BandMarks bandmarks::unpacked(const QByteArray& bytes)
{
    const QBitArray bits = QBitArray::fromBits(bytes.constData(), bandMarkCount);
    BandMarks marks;
    for (int i = 0; i < bandMarkCount; ++i)
        marks[static_cast<std::size_t>(i)] = bits[i];
    return marks;
}
