// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentpanel.h"

#include <QFrame>
#include <QLabel>
#include <QString>

/// What a panel shows and holds, held against the four states that it may be in.
namespace panelstates
{
/// Empty if the panel is in one of its states; otherwise what is wrong with it. While a run goes in
/// its order, components before the armed one are done and those behind it untested.
inline QString problem(const ComponentPanel& panel, int armed)
{
    const auto* frame = panel.findChild<QFrame*>(QStringLiteral("frame"));
    const bool raised = panel.children().last() == frame;
    const bool lowered = panel.children().first() == frame;
    const QString style = frame->styleSheet();
    const bool dark = style.contains(QLatin1String("rgba(20,20,20,200)"));
    const bool blue = style.contains(QLatin1String("blue"));
    const bool green = style.contains(QLatin1String("rgba(0,255,0,200)"));

    const auto& bands = panel.coverage();
    const int c = panel.component();
    if (bands.size() != (c >= 9 && c < 40 ? 2 : 13))
        return QStringLiteral("component %1 has %2 bands").arg(c).arg(bands.size());
    int covered = 0;
    for (int i = 0; i < bands.size(); ++i) {
        const bool isCovered = bands.at(i).covered == 1.0F;
        const QString label =
            panel.findChild<QLabel*>(QStringLiteral("label_%1").arg(i))->styleSheet();
        const auto expected =
            isCovered ? QLatin1String("background: white;") : QLatin1String("background: black;");
        if (label != expected || (!isCovered && bands.at(i).covered != 0.0F))
            return QStringLiteral("component %1, band %2: %3").arg(c).arg(i).arg(label);
        covered += isCovered ? 1 : 0;
    }

    const bool untested = dark && raised && covered == 0;
    const bool underTest = blue && lowered && covered < bands.size();
    const bool done = green && raised;
    const bool fits = c == 39 || c > armed ? untested : c == armed ? underTest : done;
    return fits ? QString()
                : QStringLiteral("component %1, armed %2: \"%3\", %4 covered")
                      .arg(c)
                      .arg(armed)
                      .arg(style)
                      .arg(covered);
}
} // namespace panelstates
