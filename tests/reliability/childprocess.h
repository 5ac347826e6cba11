// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QProcess>
#include <QProcessEnvironment>

/// The station as a process of its own.
class ChildProcess : public QProcess
{
public:
    /// How long a station may take to start or to end: only a hang takes longer.
    static constexpr int patienceMs = 30000;

    ~ChildProcess() override
    {
        kill();
        waitForFinished(patienceMs);
    }

    /// Whether it came so far as to say that it is ready.
    bool startAndWait(const QString& program, const QStringList& arguments)
    {
        start(program, arguments);
        while (!readAllStandardOutput().contains("ready"))
            if (!waitForReadyRead(patienceMs))
                return false;
        return true;
    }
};
