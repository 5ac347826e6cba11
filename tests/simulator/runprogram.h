// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// What a program did that was run to its end.
struct ProgramResult {
    int exitStatus; ///< -1 if it crashed or did not end.
    QString output;
    QString errors;
};

inline ProgramResult runProgram(const QString& program, const QStringList& arguments)
{
    constexpr int patienceMs = 90000;
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patienceMs) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, {}};
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}
