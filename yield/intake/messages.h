// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <cstdio>

/// Whole lines for people, at once and from any thread.
namespace messages
{
inline void tell(const QString& line, std::FILE* stream = stdout)
{
    std::fputs((line + '\n').toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

/// Something that a person should know.
inline void warn(const QString& line)
{
    tell(line, stderr);
}
} // namespace messages
