// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/logcheck.h"

#include "yield/logs/stationlog.h"

#include <QStringList>

namespace
{
bool isExpected(int componentNum, int band, const UnitFault& unit, bool isTarvekStation)
{
    return (componentNum != roster::channelButton || isTarvekStation) &&
           !unitfault::leavesUncovered(unit, componentNum, band);
}
} // namespace

QString logcheck::differences(const QByteArray& log, const UnitFault& unit, bool isTarvekStation)
{
    QString reason;
    const auto read = stationlog::read(log, reason);
    if (!read)
        return reason;
    QStringList found;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        QStringList bands;
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            if (read->marks[bandmarks::markIndex(c, band)] !=
                isExpected(c, band, unit, isTarvekStation))
                bands << QString::number(band);
        if (!bands.isEmpty())
            found << QStringLiteral("component %1 differs in band %2")
                         .arg(QString::number(c), bands.join(QLatin1Char(' ')));
    }
    return found.join(QStringLiteral("; "));
}
