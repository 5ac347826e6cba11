// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <cstdio>

/// Whole lines for people, at once and from any thread.
namespace messages
{
inline void write(std::FILE* stream, const QString& line)
{
    std::fputs((line + '\n').toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

inline void tell(const QString& line)
{
    write(stdout, line);
}

/// Something that a person should know.
inline void warn(const QString& line)
{
    write(stderr, line);
}
} // namespace messages
