// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/page/figuretext.h"

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

QString figuretext::countOf(int part, int whole)
{
    return QString("%1 of %2").arg(count(part), count(whole));
}

QString figuretext::share(int part, int whole)
{
    return QString("%1 (%2)").arg(percent(part, whole), countOf(part, whole));
}

QString figuretext::limits(const Limits& limits, int units)
{
    return QString("%1 to %2").arg(percent(limits.low, units), percent(limits.high, units));
}

QString figuretext::verdict(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Below:
        return "▼ below";
    case Verdict::Above:
        return "▲ above";
    case Verdict::Within:
        break;
    }
    return "within";
}

QString figuretext::day(const QDate& date)
{
    return QLocale(QLocale::English).toString(date, QString("ddd d MMM yyyy"));
}

QString figuretext::minute(const QString& time)
{
    return time.left(16).replace('T', ' ');
}

QString figuretext::moment(const QString& time)
{
    const QDate date = QDate::fromString(time.left(10), Qt::ISODate);
    return QLocale(QLocale::English).toString(date, QString("ddd d MMM ")) + time.mid(11, 5);
}

QString figuretext::duration(qint64 seconds)
{
    constexpr qint64 hour = 3600;
    const qint64 days = seconds / (24 * hour);
    if (days >= 2)
        return QString("%1 days").arg(days);
    if (seconds >= 2 * hour)
        return QString("%1 hours").arg(seconds / hour);
    const qint64 minutes = seconds / 60;
    return QString(minutes == 1 ? "%1 minute" : "%1 minutes").arg(minutes);
}
