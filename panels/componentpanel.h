// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentrange.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <QVector>
#include <QWidget>

class QFrame;
class QLabel;

using juce::MidiMessage;

/// What a panel's verdict says; carried as an int by signal_ComponentResult.
namespace componentresult
{
inline constexpr int passed = 1;
inline constexpr int skipped = 2;
} // namespace componentresult

/// The test protocol that every component's panel follows: it picks its own messages out of the
/// unit's stream, judges them against its bands while it is under test, shows its state in colour
/// and reports passed or skipped. It never decides that a control has failed.
///
/// Unless a subclass says otherwise, the control reports its position by a controller of its own,
/// as faders and rotaries do. A subclass builds its form and shows the judged value. Everything
/// here runs on the GUI thread.
class ComponentPanel : public QWidget
{
    Q_OBJECT

public:
    ~ComponentPanel() override;

    /// The number of the component that this panel judges.
    int component() const { return componentNum; }

    /// The bands and whether each was covered since the last reset, in band order.
    const QVector<ComponentRange>& coverage() const { return ranges; }

Q_SIGNALS:
    /// The control passed or was skipped: one of the values in componentresult.
    void signal_ComponentResult(int componentNum, int result);
    /// One more band was covered.
    void signal_Click();
    /// The operator moved this control while the one before it is still under test.
    void signal_Beep();

public Q_SLOTS:
    /// Judges one message of the unit; messages for other controls are ignored.
    void slot_ReceiveMIDI(MidiMessage midiMessage);
    /// Back to untested. The number queued last stays: a matching message would be judged again.
    void slot_Init();
    /// Announces which component is now under test; any number may come.
    void slot_QueueComponent(int componentNum);
    /// The operator skipped a component; any number may come.
    void slot_Skip(int componentNum);

protected:
    /// tag: stored for whoever identifies panels by it; nothing here reads it.
    ComponentPanel(QWidget* parent, int tag, int componentNum);

    /// The last step of a subclass's constructor, once its form stands: finds one label for each
    /// band and resets the panel.
    void adoptForm(QFrame* stateFrame);

    /// Lays the green veil of a control that is done over the panel: restyled first, then raised.
    void veilAsDone();

    /// Whether a message belongs to this panel's control.
    virtual bool accepts(const MidiMessage& midiMessage) const;
    /// The number to judge in a message that was accepted, 0 to 127.
    virtual int valueOf(const MidiMessage& midiMessage) const;
    /// The bands of a panel that is reset.
    virtual QVector<ComponentRange> freshRanges() const;
    /// The frame's style sheet while the control is under test.
    virtual QString underTestStyle() const;
    /// Shows a value that was judged; a panel without a display shows nothing.
    virtual void display(int value);
    /// Shows that the control passed: raised first, then restyled.
    virtual void showPassed();

private:
    /// Styles the frame, which covers the whole panel; hidesWindow: nothing behind it shines
    /// through.
    void setGround(const QString& style, bool hidesWindow);

    /// Marks every band that the value falls into and is not covered yet.
    void coverRanges(float value);

    int tag;
    int componentNum;
    bool passed = false;
    QVector<ComponentRange> ranges;
    QVector<QLabel*> rangeLabels;
    int queuedComponent = -1;
    QFrame* frame = nullptr;
};
