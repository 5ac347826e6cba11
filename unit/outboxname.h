// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <optional>

/// The name of a log in the outbox, <started>-<16 hexadecimal digits>-<save>.txt. A name is never
/// used again: started is the station's local time at the run's first band, the digits are random.
/// A TARVEK station ends it with -TARVEK.txt. The station writes these names, zorvi_yield reads
/// them.
struct OutboxName {
    QString run;           ///< Identifies the run: yyyyMMddTHHmmss.zzz-0123456789abcdef.
    int save = 1;          ///< Counts the logs of the run, from 1.
    bool isTarvek = false; ///< The station tests component 18.

    QString fileName() const;

    /// The start of the run as yyyy-MM-ddTHH:mm:ss.zzz, the station's wall clock.
    QString startedAt() const;

    /// Reads a file name without its folder. Nothing if it is not exactly such a name.
    static std::optional<OutboxName> read(const QString& fileName);
};
