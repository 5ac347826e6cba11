// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/unitfault.h"

#include <QString>

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

/// The options of a parsed command line. Throws std::runtime_error, with what is wrong, if a value
/// is out of range or an argument is no option.
UnitOptions readFrom(const QCommandLineParser& parser);

/// The value of an option as a number, or a whole number, from min to max; throws as above.
double number(const QCommandLineParser& parser, const QString& option, double min, double max);
int wholeNumber(const QCommandLineParser& parser, const QString& option, int min, int max);
} // namespace unitoptions
