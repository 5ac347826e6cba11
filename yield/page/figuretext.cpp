// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/figuretext.h"

#include "yield/logs/controlnames.h"

#include <QLocale>

#include <algorithm>

QString figuretext::count(int number)
{
    return QLocale(QLocale::English).toString(number);
}

QString figuretext::units(int number)
{
    return count(number) + (number == 1 ? " unit" : " units");
}

QString figuretext::ifAny(int number, QString (*text)(int))
{
    return number > 0 ? text(number) : QString();
}

QString figuretext::percent(int part, int whole)
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

QString figuretext::share(int part, int whole)
{
    return QString("%1 (%2 of %3)").arg(percent(part, whole), count(part), count(whole));
}

QString figuretext::control(const ControlMisses& control)
{
    return QString("%1 (component %2)")
        .arg(controlnames::control(control.componentNum))
        .arg(control.componentNum);
}

QString figuretext::missed(const ControlMisses& control)
{
    if (control.units > 0)
        return share(control.missed, control.units);
    return control.componentNum == roster::powerButton ? "never tested" : "not tested here";
}
