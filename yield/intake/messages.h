// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <cstdio>

#include <unistd.h>

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

/// Says every few seconds on a terminal how much of something long is done; nothing into a file.
struct Progress {
    static constexpr int lineMs = 3000;

    QString what; ///< Such as "logs".
    int done = 0;
    QDeadlineTimer nextLine{lineMs};

    void add(int more)
    {
        done += more;
        if (!nextLine.hasExpired() || isatty(STDERR_FILENO) == 0)
            return;
        nextLine.setRemainingTime(lineMs);
        messages::warn(QString("%1 %2 ...").arg(done).arg(what));
    }
};
