// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"

namespace
{
/// Fader 8 stands apart: the gap before it is wider.
QPoint faderPlace(int fader)
{
    constexpr int lastFader = roster::faderCount - 1;
    constexpr int faderTop = 200;
    const int width = panelSize(roster::Kind::Fader).width();
    if (fader == lastFader)
        return {lastFader * (width - 1) + 533, faderTop};
    return {(width + 30) * fader + 120, faderTop};
}

QPoint rotaryPlace(int rotary)
{
    return {faderPlace(2 * rotary).x() + 10, 10};
}

/// The groups of buttons: one above each fader, a column at the left edge, and right of fader 7 a
/// single one, two columns of six and a cluster of four.
QPoint buttonPlace(int button)
{
    constexpr int rowOverFaders = 150;
    constexpr int firstInLeftColumn = 9;
    constexpr int lone = 13;
    constexpr int firstInPairs = 14;
    constexpr int firstInCluster = 26;
    constexpr QPoint cluster[] = {{126, 15}, {126, 85}, {90, 50}, {165, 50}};

    if (button < firstInLeftColumn)
        return {faderPlace(button).x(), rowOverFaders};
    if (button < lone)
        return {30, 210 + 60 * (button - firstInLeftColumn)};

    const QPoint besideFader7 = faderPlace(7);
    if (button == lone)
        return {besideFader7.x() + 126, rowOverFaders};
    if (button < firstInCluster) {
        const int row = (button - firstInPairs) / 2;
        const bool left = (button - firstInPairs) % 2 == 0;
        return besideFader7 + QPoint(left ? 90 : 165, 48 * row);
    }
    const QPoint place = cluster[button - firstInCluster];
    return {besideFader7.x() + place.x(), place.y()};
}
} // namespace

QSize panelSize(roster::Kind kind)
{
    switch (kind) {
    case roster::Kind::Fader:
        return {60, 270};
    case roster::Kind::Button:
        return {60, 30};
    case roster::Kind::Rotary:
        break;
    }
    return {131, 81};
}

std::optional<QPoint> panelPlace(int componentNum)
{
    if (componentNum == roster::powerButton)
        return std::nullopt;

    const int index = roster::indexInKind(componentNum);
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        return faderPlace(index);
    case roster::Kind::Button:
        return buttonPlace(index);
    case roster::Kind::Rotary:
        break;
    }
    return rotaryPlace(index);
}
