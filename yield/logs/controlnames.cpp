// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"

#include <QMap>
#include <QVector>

#include <algorithm>

namespace
{
QString values(int componentNum, int firstBand, int lastBand)
{
    const auto kind = roster::kindOf(componentNum);
    if (kind == roster::Kind::Button)
        return firstBand == 0 ? "released" : "pressed";
    // The last band reaches past the highest value.
    const int highest = std::min(valuebands::band(kind, lastBand).max, valuebands::highestValue);
    return QString("%1 to %2").arg(valuebands::band(kind, firstBand).min).arg(highest);
}

/// Neighbours are joined; bands: ascending.
QString bandsText(int componentNum, const QVector<int>& bands)
{
    if (bands.size() == bandmarks::bandCount(componentNum))
        return "all";
    QStringList words;
    for (int first = 0, last = 0; first < bands.size(); first = ++last) {
        while (last + 1 < bands.size() && bands.at(last + 1) == bands.at(last) + 1)
            ++last;
        words << values(componentNum, bands.at(first), bands.at(last));
    }
    return words.join(", ");
}
} // namespace

QString controlnames::control(int componentNum)
{
    const QString kinds[] = {"Fader %1", "Button %1", "Rotary %1"};
    return kinds[static_cast<int>(roster::kindOf(componentNum))].arg(
        roster::indexInKind(componentNum));
}

QString controlnames::band(int componentNum, int band)
{
    return values(componentNum, band, band);
}

QStringList controlnames::missed(const std::vector<bandmarks::Band>& bands)
{
    QMap<int, QVector<int>> ofControls;
    for (const auto& band : bands)
        ofControls[band.componentNum].append(band.band);
    QStringList texts;
    for (auto i = ofControls.cbegin(); i != ofControls.cend(); ++i)
        texts << control(i.key()) + ": " + bandsText(i.key(), i.value());
    return texts;
}
