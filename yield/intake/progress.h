// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QElapsedTimer>
#include <QString>

/// Says every few seconds on a terminal how much of something long is done; nothing into a file.
class Progress
{
public:
    /// counted: of what there are so many, such as "logs read".
    explicit Progress(const QString& counted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(int more);

private:
    const QString what;
    const bool isTerminal;
    QElapsedTimer sinceLine;
    qint64 done = 0;
    bool hasLine = false;
};
