// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitoptions.h"

#include "unit/componentroster.h"

#include <QCommandLineParser>

namespace
{
const QString paceOption = QStringLiteral("pace");
const QString faultOption = QStringLiteral("fault");
const QString componentOption = QStringLiteral("component");

constexpr double minPace = 1.0;
constexpr double maxPace = 100000.0;
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

std::optional<double> unitoptions::number(const QCommandLineParser& parser, const QString& option,
                                          double min, double max, QString& error)
{
    bool isNumber = false;
    const double value = parser.value(option).toDouble(&isNumber);
    if (isNumber && value >= min && value <= max)
        return value;
    error =
        QStringLiteral("--%1 takes a number from %2 to %3, not \"%4\".")
            .arg(option, QString::number(min), QString::number(max), parser.value(option));
    return std::nullopt;
}

std::optional<int> unitoptions::wholeNumber(const QCommandLineParser& parser, const QString& option,
                                            int min, int max, QString& error)
{
    bool isNumber = false;
    const int value = parser.value(option).toInt(&isNumber);
    if (isNumber && value >= min && value <= max)
        return value;
    error =
        QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\".")
            .arg(option, QString::number(min), QString::number(max), parser.value(option));
    return std::nullopt;
}

std::optional<UnitOptions> unitoptions::readFrom(const QCommandLineParser& parser, QString& error)
{
    if (!parser.positionalArguments().isEmpty()) {
        error = QStringLiteral("unexpected argument \"%1\".").arg(parser.positionalArguments()[0]);
        return std::nullopt;
    }
    const auto pace = number(parser, paceOption, minPace, maxPace, error);
    if (!pace)
        return std::nullopt;

    const auto fault = unitfault::fromName(parser.value(faultOption));
    if (!fault) {
        error = QStringLiteral("--fault takes one of %1, not \"%2\".")
                    .arg(unitfault::names().join(QStringLiteral(", ")), parser.value(faultOption));
        return std::nullopt;
    }

    UnitFault unit{*fault, unitfault::defaultComponent(*fault)};
    if (parser.isSet(componentOption)) {
        bool isNumber = false;
        unit.componentNum = parser.value(componentOption).toInt(&isNumber);
        if (!isNumber || !unitfault::applies(*fault, unit.componentNum)) {
            error = QStringLiteral("Component \"%1\" cannot have the fault \"%2\".")
                        .arg(parser.value(componentOption), parser.value(faultOption));
            return std::nullopt;
        }
    }
    return UnitOptions{*pace, unit};
}
