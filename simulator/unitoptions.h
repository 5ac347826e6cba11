// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QString>

#include <optional>

class QCommandLineParser;

/// How a simulated unit behaves, as told on a command line.
struct UnitOptions {
    double pace;
    UnitFault unit;
};

namespace unitoptions
{
/// Adds --pace, --fault and --component; the pace in messages per second.
void addTo(QCommandLineParser& parser, double usualPace);

/// The options of a command line that was parsed. Nothing if one of them has a value that makes no
/// sense, or if there is more than options; `error` then says what and why.
std::optional<UnitOptions> readFrom(const QCommandLineParser& parser, QString& error);

/// The value of an option that is a number, or a whole number, between the two bounds; otherwise
/// nothing and an error as above.
std::optional<double> number(const QCommandLineParser& parser, const QString& option, double lowest,
                             double highest, QString& error);
std::optional<int> wholeNumber(const QCommandLineParser& parser, const QString& option, int lowest,
                               int highest, QString& error);
} // namespace unitoptions
