// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentrange.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <QDateTime>
#include <QVector>
#include <QWidget>

class QFrame;
class QLabel;

using juce::MidiMessage;

/// The results that signal_ComponentResult carries.
namespace componentresult
{
inline constexpr int passed = 1;
inline constexpr int skipped = 2;
} // namespace componentresult

/// The test protocol of every component's panel: it takes its control's messages from the unit's
/// stream, judges them against its bands while it is under test, shows its state in colour and
/// reports passed or skipped. It never reports a failure: a control that does not pass is skipped.
///
/// A subclass for each kind of control gives the form, the filter and the display.
/// Everything runs on the GUI thread.
class ComponentPanel : public QWidget
{
    Q_OBJECT

public:
    ~ComponentPanel() override;

    /// The component that this panel judges, 0 to 43.
    int getComponentNum() const { return componentNum; }

    /// The bands in their order, and which are covered since the last reset.
    const QVector<ComponentRange>& coverage() const { return ranges; }

    /// The local time of the first covered band since the last reset; null if none is covered.
    const QDateTime& firstBandAt() const { return firstBand; }

Q_SIGNALS:
    /// The control passed or was skipped: a value of componentresult.
    void signal_ComponentResult(int componentNum, int result);
    /// One more band was covered.
    void signal_Click();
    /// The operator moved this control while the component before it is under test.
    void signal_Beep();

public Q_SLOTS:
    /// Judges one message of the unit; messages for other controls are ignored.
    void slot_ReceiveMIDI(MidiMessage midiMessage);
    /// Resets the panel to untested. The queued number stays: a message of the component under test
    /// is judged again.
    void slot_Init();
    /// The component that is now under test; any number.
    void slot_QueueComponent(int componentNum);
    /// The component that the operator skipped; any number.
    void slot_Skip(int componentNum);

protected:
    /// tag is stored and not read.
    ComponentPanel(QWidget* parent, int tag, int componentNum);

    /// For the end of a subclass's constructor, after its form is built: finds one label for each
    /// band and resets the panel. frame covers the whole panel.
    void adoptForm(QFrame* frame);

    /// Shows the panel as done (green): the frame is restyled, then raised.
    void showDone();
    /// The same in the other order: raised, then restyled.
    void raiseAndShowDone();

    /// Whether a message is one of this panel's control.
    virtual bool accepts(const MidiMessage& midiMessage) const = 0;
    /// The value to judge in an accepted message, 0 to 127.
    virtual int valueOf(const MidiMessage& midiMessage) const = 0;
    /// The frame's style sheet while the control is under test.
    virtual QString underTestStyle() const = 0;
    /// Shows a judged value, 0 to 127.
    virtual void display(int value) = 0;
    /// Shows that the control passed, by showDone() or raiseAndShowDone().
    virtual void showPassed() = 0;

private:
    /// Sets the frame's style sheet. opaque: the window under the panel is not visible through it.
    void setFrameStyle(const QString& style, bool opaque);

    /// The bands of the component's kind, none covered.
    QVector<ComponentRange> freshRanges() const;
    /// Covers the uncovered bands that contain the value.
    void coverRanges(float value);

    int tag;
    int componentNum;
    bool passed = false;
    QVector<ComponentRange> ranges;
    QVector<QLabel*> rangeLabels;
    int queuedComponent = -1;
    QFrame* frame = nullptr;
    QDateTime firstBand;
};
