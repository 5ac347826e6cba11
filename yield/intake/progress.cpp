// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/progress.h"

#include <cstdio>

#include <unistd.h>

namespace
{
constexpr int lineMs = 3000;
}

Progress::Progress(const QString& counted)
    : what(counted)
    , isTerminal(isatty(STDERR_FILENO) != 0)
{
    sinceLine.start();
}

Progress::~Progress()
{
    if (hasLine)
        std::fputs("\r\x1B[K", stderr); // the line is empty again
}

void Progress::add(int more)
{
    done += more;
    if (!isTerminal || sinceLine.elapsed() < lineMs)
        return;
    sinceLine.restart();
    hasLine = true;
    std::fprintf(stderr, "\r%lld %s ...", static_cast<long long>(done), qPrintable(what));
}
