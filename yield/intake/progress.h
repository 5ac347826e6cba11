// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstdio>

#include <unistd.h>

/// Says every few seconds on a terminal how much of something long is done; nothing into a file.
class Progress
{
public:
    /// counted: of what there are so many, such as "logs".
    explicit Progress(const QString& counted)
        : what(counted)
    {
        sinceLine.start();
    }
    ~Progress()
    {
        if (hasLine)
            std::fputs("\r\x1B[K", stderr); // the line is empty again
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(int more)
    {
        constexpr int lineMs = 3000;
        done += more;
        if (!isTerminal || !sinceLine.hasExpired(lineMs))
            return;
        sinceLine.start();
        hasLine = true;
        std::fprintf(stderr, "\r%d %s ...", done, qPrintable(what));
    }

private:
    const QString what;
    const bool isTerminal = isatty(STDERR_FILENO) != 0;
    QElapsedTimer sinceLine;
    int done = 0;
    bool hasLine = false;
};
