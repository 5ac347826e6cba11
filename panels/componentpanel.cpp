// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/componentpanel.h"

#include "panels/unitmessages.h"
#include "panels/valuebands.h"

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

/// Setting a style sheet is the dearest thing a panel does, even to the text it already has.
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

ComponentPanel::ComponentPanel(QWidget* parent, int panelTag, int component)
    : QWidget(parent)
    , tag(panelTag)
    , componentNum(component)
{
}

ComponentPanel::~ComponentPanel() = default;

void ComponentPanel::adoptForm(QFrame* stateFrame)
{
    frame = stateFrame;
    rangeLabels.resize(freshRanges().size());
    for (int i = 0; i < rangeLabels.size(); ++i)
        rangeLabels[i] = findChild<QLabel*>(QStringLiteral("label_%1").arg(i));
    slot_Init();
}

void ComponentPanel::setGround(const QString& style, bool hidesWindow)
{
    restyle(frame, style);
    // Said to Qt, which else paints the window behind the panel first, each time something in it
    // moves: that was nearly half of what a message of the armed control cost.
    setAttribute(Qt::WA_OpaquePaintEvent, hidesWindow);
}

void ComponentPanel::slot_Init()
{
    passed = false;
    ranges = freshRanges();
    for (QLabel* label : std::as_const(rangeLabels))
        restyle(label, blankLabelStyle);
    setGround(untestedStyle, false);
    frame->raise();
}

void ComponentPanel::slot_QueueComponent(int component)
{
    queuedComponent = component;
    if (component != componentNum)
        return;
    frame->lower();
    setGround(underTestStyle(), true);
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

void ComponentPanel::coverRanges(float value)
{
    for (int i = 0; i < ranges.size(); ++i) {
        if (isCovered(ranges.at(i)) || value < ranges.at(i).min || value > ranges.at(i).max)
            continue;
        ranges[i].covered = 1.0F;
        Q_EMIT signal_Click();
        restyle(rangeLabels.at(i), coveredLabelStyle);
    }
}

void ComponentPanel::slot_Skip(int component)
{
    if (component != componentNum)
        return;
    // A skip leaves no mark in the panel: it looks like a pass, and only the result tells them
    // apart, so that a skipped control can be queued again and goes on from where it stood.
    veilAsDone();
    Q_EMIT signal_ComponentResult(componentNum, componentresult::skipped);
}

void ComponentPanel::veilAsDone()
{
    setGround(doneStyle, false);
    frame->raise();
}

bool ComponentPanel::accepts(const MidiMessage& midiMessage) const
{
    return midiMessage.isControllerOfType(unitmessages::controllerOf(componentNum));
}

int ComponentPanel::valueOf(const MidiMessage& midiMessage) const
{
    return midiMessage.getControllerValue();
}

QVector<ComponentRange> ComponentPanel::freshRanges() const
{
    return positionBands();
}

QString ComponentPanel::underTestStyle() const
{
    return QStringLiteral("QFrame{border:none; background: blue;}");
}

void ComponentPanel::display(int) {}

void ComponentPanel::showPassed()
{
    frame->raise();
    setGround(doneStyle, false);
}
