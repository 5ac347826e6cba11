// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/logcheck.h"

#include "demo/panelrun.h"
#include "yield/logs/stationlog.h"

#include <QStringList>

QString logcheck::differences(const QByteArray& log, const UnitFault& unit, bool isTarvekStation)
{
    QString reason;
    const auto read = stationlog::read(log, reason);
    if (!read)
        return reason;
    const testlog::Coverage expected = PanelRun().coverageOf(unit, isTarvekStation);
    QStringList found;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        QStringList bands;
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            if (read->marks[bandmarks::markIndex(c, band)] !=
                (expected.at(static_cast<std::size_t>(c)).at(band).covered != 0.0F))
                bands << QString::number(band);
        if (!bands.isEmpty())
            found << QStringLiteral("component %1 differs in band %2")
                         .arg(QString::number(c), bands.join(QLatin1Char(' ')));
    }
    return found.join(QStringLiteral("; "));
}
