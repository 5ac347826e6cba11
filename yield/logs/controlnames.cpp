// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/controlnames.h"

#include <QMap>
#include <QVector>

#include <algorithm>

namespace
{
bool isButton(int componentNum)
{
    return roster::kindOf(componentNum) == roster::Kind::Button;
}

QString values(int firstBand, int lastBand)
{
    return QString("%1 to %2")
        .arg(valuebands::band(roster::Kind::Fader, firstBand).min)
        .arg(std::min(valuebands::band(roster::Kind::Fader, lastBand).max,
                      valuebands::highestValue)); // the last band reaches past it
}

/// Neighbours are joined; bands: ascending.
QString bandsText(int componentNum, const QVector<int>& bands)
{
    if (bands.size() == bandmarks::bandCount(componentNum))
        return "all";
    if (isButton(componentNum))
        return controlnames::band(componentNum, bands.first());
    QStringList words;
    for (int first = 0, last = 0; first < bands.size(); first = ++last) {
        while (last + 1 < bands.size() && bands.at(last + 1) == bands.at(last) + 1)
            ++last;
        words << values(bands.at(first), bands.at(last));
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
    if (isButton(componentNum))
        return band == 0 ? "released" : "pressed";
    return values(band, band);
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
