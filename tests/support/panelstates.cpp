// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/panelstates.h"

#include <QFrame>
#include <QLabel>

QVector<juce::MidiMessage> passingMessages(int componentNum)
{
    if (componentNum >= 9 && componentNum < 40) {
        const int note = componentNum < 18 ? componentNum - 8 : componentNum - 9;
        const int channel = componentNum == 18 ? 2 : 1;
        return {{0x8F + channel, note, 127}, {0x7F + channel, note, 0}};
    }
    QVector<juce::MidiMessage> messages;
    for (int value = 0; value < 130; value += 10)
        messages << juce::MidiMessage(0xB0, componentNum < 9 ? componentNum + 1 : componentNum - 30,
                                      value);
    return messages;
}

QVector<int> panelstates::coveredBands(const ComponentPanel& panel)
{
    QVector<int> covered;
    for (int i = 0; i < panel.coverage().size(); ++i) {
        const auto* label = panel.findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
        const bool isCovered = panel.coverage().at(i).covered == 1.0F;
        if (isCovered)
            covered << i;
        if (label->styleSheet() != (isCovered ? "background: white;" : "background: black;"))
            return {-1};
    }
    return covered;
}

QString panelstates::problem(const ComponentPanel& panel, int armed)
{
    const auto* frame = panel.findChild<QFrame*>(QStringLiteral("frame"));
    const bool raised = panel.children().last() == frame;
    const QString style = frame->styleSheet();
    const auto bands = coveredBands(panel);
    const int c = panel.getComponentNum();
    const int count = c >= 9 && c < 40 ? 2 : 13;

    const bool untested = style.contains("rgba(20,20,20,200)") && raised && bands.isEmpty();
    const bool underTest = style.contains("blue") && panel.children().first() == frame;
    const bool done = style.contains("rgba(0,255,0,200)") && raised;
    const bool fits = c == 39 || c > armed ? untested
                      : c == armed         ? underTest && bands.size() < count
                                           : done;
    if (fits && panel.coverage().size() == count && !bands.contains(-1))
        return {};
    return QString("component %1, armed %2: \"%3\", %4 bands")
        .arg(c)
        .arg(armed)
        .arg(style)
        .arg(bands.size());
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
