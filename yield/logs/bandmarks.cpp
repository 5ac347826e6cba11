// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/bandmarks.h"

namespace
{
constexpr std::size_t bitsInByte = 8;
}

QByteArray bandmarks::packed(const BandMarks& marks)
{
    QByteArray bytes(packedSize, '\0');
    for (std::size_t i = 0; i < marks.size(); ++i)
        if (marks[i]) {
            char& byte = bytes.data()[i / bitsInByte];
            byte = static_cast<char>(byte | 1 << i % bitsInByte);
        }
    return bytes;
}

std::optional<BandMarks> bandmarks::unpacked(const QByteArray& bytes)
{
    if (bytes.size() != packedSize)
        return std::nullopt;
    BandMarks marks;
    const auto isSet = [&](std::size_t i) {
        return (bytes.at(static_cast<int>(i / bitsInByte)) >> i % bitsInByte & 1) != 0;
    };
    for (std::size_t i = 0; i < marks.size(); ++i)
        marks[i] = isSet(i);
    for (std::size_t i = marks.size(); i < packedSize * bitsInByte; ++i)
        if (isSet(i))
            return std::nullopt;
    return marks;
}
