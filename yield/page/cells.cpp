// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/cells.h"

#include "yield/logs/controlnames.h"

#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace
{
QJsonValue ratio(int part, int whole)
{
    return whole == 0 ? QJsonValue() : QJsonValue(1.0 * part / whole);
}
} // namespace

QString cells::countText(int number)
{
    return QLocale(QLocale::English).toString(number);
}

QString cells::unitsText(int number)
{
    return countText(number) + (number == 1 ? " unit" : " units");
}

QString cells::percentText(int part, int whole)
{
    if (whole == 0)
        return "–";
    const double percent = 100.0 * part / whole;
    if (part == 0 || part == whole)
        return QString("%1\u00a0%").arg(percent);
    // Rounding must not make all or none of what is neither.
    return QString::number(std::clamp(percent, 0.1, 99.9), 'f', 1) + "\u00a0%";
}

QString cells::durationText(qint64 seconds)
{
    const auto hours = static_cast<int>(seconds / 3600);
    return (hours > 0 ? countText(hours) + " h " : "") +
           QString("%1 min %2 s").arg(seconds / 60 % 60).arg(seconds % 60);
}

Cell cells::count(int number)
{
    return {countText(number), number, "number"};
}

Cell cells::station(const QString& name)
{
    return {name, name, "name"};
}

Cell cells::percent(int part, int whole)
{
    return {percentText(part, whole), ratio(part, whole), "number"};
}

Cell cells::share(int part, int whole)
{
    const QJsonObject value{{"count", part}, {"of", whole}, {"share", ratio(part, whole)}};
    const QString basis = countText(part) + " of " + countText(whole);
    return {percentText(part, whole), value, "line", whole == 0 ? QString() : basis};
}

Cell cells::limits(const Tally& part, const Tally& all)
{
    if (part.units == 0)
        return none();
    const QStringList positions{"below LCL", "within", "above UCL"}; // as Position
    const QStringList prefixes{"▼ below LCL, ", "within ", "▲ above UCL, "};
    const ControlLimits limits = controlLimits(part.units, all);
    const Position position = limits.positionOf(part.passedFirst);
    const auto index = static_cast<int>(position);
    const QJsonObject value{{"lcl", ratio(limits.lower, part.units)},
                            {"ucl", ratio(limits.upper, part.units)},
                            {"position", positions.at(index)}};
    return {prefixes.at(index) + percentText(limits.lower, part.units) + " to " +
                percentText(limits.upper, part.units),
            value, position == Position::BelowLcl ? "bad" : "line"};
}

Cell cells::testTime(const TestTimes& times)
{
    if (times.attempts == 0)
        return none();
    const QJsonObject value{{"seconds", times.medianSeconds}, {"attempts", times.attempts}};
    return {durationText(qRound(times.medianSeconds)), value, "line",
            countText(times.attempts) + " attempts"};
}

Cell cells::control(int componentNum)
{
    const QString name = controlnames::control(componentNum);
    return {QString("%1 (component %2)").arg(name).arg(componentNum), componentNum};
}
