// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/logs/bandmarks.h"

#include <QByteArray>
#include <QString>

#include <stdexcept>

/// The content of a log of the station.
struct StationLog {
    QString serial;   ///< As typed: may be empty or hold any character but NUL.
    QString testedAt; ///< yyyy-MM-ddTHH:mm:ss, the station's wall clock.
    BandMarks marks;

    bool operator==(const StationLog& other) const
    {
        return serial == other.serial && testedAt == other.testedAt && marks == other.marks;
    }
};

/// Bytes that are no log of the station, and why, for the user.
struct NotALog : std::runtime_error {
    explicit NotALog(const QString& reason)
        : std::runtime_error(reason.toStdString())
    {
    }
};

/// The one reader of logs; docs/log-format.md describes them.
namespace stationlog
{
/// No log is longer: it holds a serial that has to fit into a file name.
constexpr int maxLogSize = 8192;

/// Reads a whole log. Strict: throws NotALog if any byte differs from what the station writes.
StationLog read(const QByteArray& bytes);
} // namespace stationlog
