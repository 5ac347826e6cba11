// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/panelplacement.h"

namespace
{
/// Fader 8 stands apart: the gap before it is wider.
QPoint faderPosition(int fader)
{
    constexpr int lastFader = roster::faderCount - 1;
    constexpr int faderTop = 200;
    const int width = panelSize(roster::Kind::Fader).width();
    if (fader == lastFader)
        return {lastFader * (width - 1) + 533, faderTop};
    return {(width + 30) * fader + 120, faderTop};
}

QPoint rotaryPosition(int rotary)
{
    return {faderPosition(2 * rotary).x() + 10, 10};
}

/// The groups of buttons: one above each fader, a column at the left edge, and right of fader 7 a
/// single one, two columns of six and a cluster of four.
QPoint buttonPosition(int button)
{
    constexpr int rowOverFaders = 150;
    constexpr int firstInLeftColumn = 9;
    constexpr int lone = 13;
    constexpr int firstInPairs = 14;
    constexpr int firstInCluster = 26;
    constexpr QPoint cluster[] = {{126, 15}, {126, 85}, {90, 50}, {165, 50}};

    if (button < firstInLeftColumn)
        return {faderPosition(button).x(), rowOverFaders};
    if (button < lone)
        return {30, 210 + 60 * (button - firstInLeftColumn)};

    const QPoint besideFader7 = faderPosition(7);
    if (button == lone)
        return {besideFader7.x() + 126, rowOverFaders};
    if (button < firstInCluster) {
        const int row = (button - firstInPairs) / 2;
        const bool left = (button - firstInPairs) % 2 == 0;
        return besideFader7 + QPoint(left ? 90 : 165, 48 * row);
    }
    const QPoint inCluster = cluster[button - firstInCluster];
    return {besideFader7.x() + inCluster.x(), inCluster.y()};
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

std::optional<QPoint> panelPosition(int componentNum)
{
    if (componentNum == roster::powerButton)
        return std::nullopt;

    const int index = roster::indexInKind(componentNum);
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        return faderPosition(index);
    case roster::Kind::Button:
        return buttonPosition(index);
    case roster::Kind::Rotary:
        break;
    }
    return rotaryPosition(index);
}
