// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitoptions.h"

#include "unit/componentroster.h"

#include <QCommandLineParser>

#include <cmath>
#include <stdexcept>

namespace
{
const QString paceOption = QStringLiteral("pace");
const QString faultOption = QStringLiteral("fault");
const QString componentOption = QStringLiteral("component");

constexpr double minPace = 1.0;
constexpr double maxPace = 100000.0;

[[noreturn]] void fail(const QString& reason)
{
    throw std::runtime_error(reason.toStdString());
}
} // namespace

void unitoptions::addTo(QCommandLineParser& parser, double defaultPace)
{
    parser.addOption({paceOption,
                      QStringLiteral("Messages per second (default: %1).").arg(defaultPace),
                      QStringLiteral("number"), QString::number(defaultPace)});
    parser.addOption({faultOption,
                      QStringLiteral("What is wrong with the unit: %1 (default: none).")
                          .arg(unitfault::names().join(QStringLiteral(", "))),
                      QStringLiteral("name"), QStringLiteral("none")});
    parser.addOption({componentOption,
                      QStringLiteral("The component that has the fault, 0 to %1 (default: depends "
                                     "on the fault).")
                          .arg(roster::lastComponent),
                      QStringLiteral("number")});
}

double unitoptions::number(const QCommandLineParser& parser, const QString& option, double min,
                           double max)
{
    bool isNumber = false;
    const double value = parser.value(option).toDouble(&isNumber);
    if (!isNumber || !(value >= min && value <= max)) // NaN is neither
        fail(QStringLiteral("--%1 takes a number from %2 to %3, not \"%4\".")
                 .arg(option, QString::number(min, 'g', 10), QString::number(max, 'g', 10),
                      parser.value(option)));
    return value;
}

int unitoptions::wholeNumber(const QCommandLineParser& parser, const QString& option, int min,
                             int max)
{
    const double value = number(parser, option, min, max);
    if (value != std::floor(value))
        fail(QStringLiteral("--%1 takes a whole number, not \"%2\".")
                 .arg(option, parser.value(option)));
    return static_cast<int>(value);
}

UnitOptions unitoptions::readFrom(const QCommandLineParser& parser)
{
    if (!parser.positionalArguments().isEmpty())
        fail(QStringLiteral("unexpected argument \"%1\".").arg(parser.positionalArguments()[0]));
    const double pace = number(parser, paceOption, minPace, maxPace);
    const auto fault = unitfault::fromName(parser.value(faultOption));
    if (!fault)
        fail(QStringLiteral("--fault takes one of %1, not \"%2\".")
                 .arg(unitfault::names().join(QStringLiteral(", ")), parser.value(faultOption)));

    int componentNum = unitfault::defaultComponent(*fault);
    if (parser.isSet(componentOption))
        componentNum =
            wholeNumber(parser, componentOption, roster::firstComponent, roster::lastComponent);
    if (!unitfault::applies(*fault, componentNum))
        fail(QStringLiteral("Component \"%1\" cannot have the fault \"%2\".")
                 .arg(QString::number(componentNum), parser.value(faultOption)));
    return {pace, {*fault, componentNum}};
}
