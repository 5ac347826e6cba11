// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/componentpanel.h"

#include "unit/valuebands.h"

#include <QDebug>
#include <QFrame>
#include <QLabel>

#include <algorithm>
#include <utility>

namespace
{
const QString untestedStyle =
    QStringLiteral("QFrame{border:none; background: rgba(20,20,20,200);}");
const QString doneStyle = QStringLiteral("QFrame{border:none; background: rgba(0,255,0,200);}");
const QString blankLabelStyle = QStringLiteral("background: black;");
const QString coveredLabelStyle = QStringLiteral("background: white;");

/// Setting a style sheet is the slowest thing that a panel does, also with the text it already has.
void restyle(QWidget* widget, const QString& style)
{
    if (widget->styleSheet() != style)
        widget->setStyleSheet(style);
}

bool isCovered(const ComponentRange& range)
{
    return range.covered != 0.0F;
}
} // namespace

ComponentPanel::ComponentPanel(QWidget* parent, int panelTag, int num)
    : QWidget(parent)
    , tag(panelTag)
    , componentNum(num)
{
}

ComponentPanel::~ComponentPanel() = default;

void ComponentPanel::adoptForm(QFrame* formFrame)
{
    frame = formFrame;
    rangeLabels.resize(valuebands::count(roster::kindOf(componentNum)));
    for (int i = 0; i < rangeLabels.size(); ++i)
        rangeLabels[i] = findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
    slot_Init();
}

void ComponentPanel::setFrameStyle(const QString& style, bool opaque)
{
    restyle(frame, style);
    // Otherwise Qt paints the window under the panel before each change in the panel: nearly half
    // of the cost of a message of the armed control.
    setAttribute(Qt::WA_OpaquePaintEvent, opaque);
}

void ComponentPanel::slot_Init()
{
    passed = false;
    ranges = freshRanges();
    firstBand = {};
    for (QLabel* label : std::as_const(rangeLabels))
        restyle(label, blankLabelStyle);
    setFrameStyle(untestedStyle, false);
    frame->raise();
}

void ComponentPanel::slot_QueueComponent(int num)
{
    queuedComponent = num;
    if (num != componentNum)
        return;
    frame->lower();
    setFrameStyle(underTestStyle(), true);
}

void ComponentPanel::slot_ReceiveMIDI(MidiMessage midiMessage)
{
    if (passed || !accepts(midiMessage))
        return;

    if (queuedComponent != componentNum) {
        if (queuedComponent == componentNum - 1) {
            qDebug() << "next comp" << componentNum << queuedComponent;
            Q_EMIT signal_Beep();
        }
        return;
    }

    const int value = valueOf(midiMessage);
    coverRanges(static_cast<float>(value));
    display(value);

    if (!std::all_of(ranges.cbegin(), ranges.cend(), isCovered))
        return;
    passed = true;
    Q_EMIT signal_ComponentResult(componentNum, componentresult::passed);
    showPassed();
}

QVector<ComponentRange> ComponentPanel::freshRanges() const
{
    const roster::Kind kind = roster::kindOf(componentNum);
    QVector<ComponentRange> fresh;
    for (int i = 0; i < valuebands::count(kind); ++i) {
        const auto [min, max] = valuebands::band(kind, i);
        fresh.append({static_cast<float>(min), static_cast<float>(max), 0.0F});
    }
    return fresh;
}

void ComponentPanel::coverRanges(float value)
{
    for (int i = 0; i < ranges.size(); ++i) {
        if (isCovered(ranges.at(i)) || value < ranges.at(i).min || value > ranges.at(i).max)
            continue;
        ranges[i].covered = 1.0F;
        if (firstBand.isNull())
            firstBand = QDateTime::currentDateTime();
        Q_EMIT signal_Click();
        restyle(rangeLabels.at(i), coveredLabelStyle);
    }
}

void ComponentPanel::slot_Skip(int num)
{
    if (num != componentNum)
        return;
    // On purpose only the result says that this was a skip: a skipped control that is queued again
    // goes on with the bands it has.
    showDone();
    Q_EMIT signal_ComponentResult(componentNum, componentresult::skipped);
}

void ComponentPanel::showDone()
{
    setFrameStyle(doneStyle, false);
    frame->raise();
}

void ComponentPanel::raiseAndShowDone()
{
    frame->raise();
    setFrameStyle(doneStyle, false);
}
