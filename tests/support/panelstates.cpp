// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/panelstates.h"

#include "app/mainwindow.h"

#include <QFrame>
#include <QLabel>

QVector<int> panelstates::coveredBands(const ComponentPanel& panel)
{
    QVector<int> covered;
    for (int i = 0; i < panel.coverage().size(); ++i) {
        const auto* label = panel.findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
        const bool isCovered = panel.coverage().at(i).covered == 1.0F;
        const bool isWhite = label->styleSheet() == QLatin1String("background: white;");
        if (isCovered)
            covered << i;
        if (isCovered != isWhite ||
            (!isWhite && label->styleSheet() != QLatin1String("background: black;")))
            return {-1};
    }
    return covered;
}

QString panelstates::problem(const ComponentPanel& panel, int armed)
{
    const auto* frame = panel.findChild<QFrame*>(QStringLiteral("frame"));
    const bool raised = panel.children().last() == frame;
    const bool lowered = panel.children().first() == frame;
    const QString style = frame->styleSheet();
    const auto bands = coveredBands(panel);

    const int c = panel.component();
    const int count = c >= 9 && c < 40 ? 2 : 13;
    const bool untested =
        style.contains(QLatin1String("rgba(20,20,20,200)")) && raised && bands.isEmpty();
    const bool underTest = style.contains(QLatin1String("blue")) && lowered && bands.size() < count;
    const bool done = style.contains(QLatin1String("rgba(0,255,0,200)")) && raised;
    const bool fits = c == 39 || c > armed ? untested : c == armed ? underTest : done;
    if (fits && panel.coverage().size() == count && !bands.contains(-1))
        return {};
    return QStringLiteral("component %1, armed %2: \"%3\", %4 of %5 bands")
        .arg(c)
        .arg(armed)
        .arg(style)
        .arg(bands.size())
        .arg(panel.coverage().size());
}

StateWatch::StateWatch(MainWindow& window)
    : panels(window.findChildren<ComponentPanel*>())
{
    connect(&window, &MainWindow::signal_QueueComponent, this, [this](int c) { armed = c; });
}

QString StateWatch::problem() const
{
    for (const auto* panel : panels)
        if (QString text = panelstates::problem(*panel, armed); !text.isEmpty())
            return text;
    return {};
}
