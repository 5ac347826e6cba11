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
    if (part == 0)
        return "0\u00a0%";
    if (part == whole)
        return "100\u00a0%";
    // Rounding must not make all or none of what is neither.
    const double percent = std::clamp(100.0 * part / whole, 0.1, 99.9);
    return QString::number(percent, 'f', 1) + "\u00a0%";
}

QString cells::controlText(int componentNum)
{
    return QString("%1 (component %2)").arg(controlnames::control(componentNum)).arg(componentNum);
}

Cell cells::count(int number)
{
    return {countText(number), number, "number"};
}

Cell cells::empty()
{
    return {"–", {}};
}

Cell cells::share(int part, int whole)
{
    const QJsonObject value{{"count", part}, {"of", whole}, {"share", ratio(part, whole)}};
    return {percentText(part, whole), value, "line", countText(part) + " of " + countText(whole)};
}

Cell cells::percent(int part, int whole)
{
    return {percentText(part, whole), ratio(part, whole), "number"};
}

Cell cells::controlLimits(const Tally& part, const Tally& all)
{
    const ControlLimits limits = ::controlLimits(part.units, all);
    const Position position = positionOf(part, all);
    const QString name = position == Position::BelowLcl   ? "below LCL"
                         : position == Position::AboveUcl ? "above UCL"
                                                          : "within";
    const QString prefix = position == Position::BelowLcl   ? "▼ below LCL, "
                           : position == Position::AboveUcl ? "▲ above UCL, "
                                                            : "within ";
    const QJsonObject value{{"lcl", ratio(limits.lower, part.units)},
                            {"ucl", ratio(limits.upper, part.units)},
                            {"position", name}};
    return {prefix + percentText(limits.lower, part.units) + " to " +
                percentText(limits.upper, part.units),
            value, position == Position::BelowLcl ? "bad" : "line"};
}

Cell cells::control(int componentNum)
{
    return {controlText(componentNum), componentNum};
}

Cell cells::failedUnits(const ControlFailures& control)
{
    Cell cell = share(control.failed, control.units);
    if (control.units == 0) {
        cell.text =
            control.componentNum == roster::powerButton ? "never tested" : "not tested here";
        cell.basis.clear();
    }
    return cell;
}

Cell cells::testTime(const TestTimes& times)
{
    if (!times.medianSeconds)
        return {"–", {}, "line"};
    const int seconds = qRound(*times.medianSeconds);
    const int hours = seconds / 3600;
    const QString hoursText = hours > 0 ? QString("%1 h ").arg(hours) : QString();
    const QString text = QString("%1 min %2 s").arg(seconds / 60 % 60).arg(seconds % 60);
    const QJsonObject value{{"seconds", *times.medianSeconds}, {"attempts", times.attempts}};
    return {hoursText + text, value, "line", countText(times.attempts) + " attempts"};
}

Cell cells::station(const QString& name)
{
    return {name, name, "name"};
}

Cell cells::time(const QString& testedAt)
{
    return {testedAt.left(16).replace('T', ' '), testedAt, "line"};
}
