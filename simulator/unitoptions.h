// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QString>

#include <optional>

class QCommandLineParser;

/// How a simulated unit behaves: the options that its programs share.
struct UnitOptions {
    double pace;
    UnitFault unit;
};

namespace unitoptions
{
/// Adds --pace, --fault and --component; the pace in messages per second.
void addTo(QCommandLineParser& parser, double defaultPace);

/// The options of a parsed command line. Nothing if a value is out of range or an argument is no
/// option; `error` then holds the reason.
std::optional<UnitOptions> readFrom(const QCommandLineParser& parser, QString& error);

/// The value of an option as a number, or a whole number, from min to max; otherwise nothing
/// and an error as above.
std::optional<double> number(const QCommandLineParser& parser, const QString& option, double min,
                             double max, QString& error);
std::optional<int> wholeNumber(const QCommandLineParser& parser, const QString& option, int min,
                               int max, QString& error);
} // namespace unitoptions
