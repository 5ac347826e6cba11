// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/makepanel.h"
#include "tests/support/station.h"
#include "unit/panelplacement.h"

#include <QAbstractSlider>
#include <QFrame>
#include <QSignalSpy>

namespace
{
const QString untested = ": QFrame{border:none; background: rgba(20,20,20,200);} on top";
const QString done = ": QFrame{border:none; background: rgba(0,255,0,200);} on top";

bool isButton(int component)
{
    return component >= 9 && component < 40;
}

/// The style of a panel's frame, its position in the stack, and whether the window shows through.
QString frameOf(const ComponentPanel& panel)
{
    const auto* frame = panel.findChild<QFrame*>("frame");
    const bool opaque = panel.testAttribute(Qt::WA_OpaquePaintEvent);
    return ": " + frame->styleSheet() + (panel.children().last() == frame ? " on top" : "") +
           (panel.children().first() == frame ? " below" : "") + (opaque ? ", opaque" : "");
}
/// A panel's signals in their order, each with the frame at that moment.
struct PanelJournal : QObject {
    explicit PanelJournal(const ComponentPanel& observed)
        : panel(observed)
    {
        connect(&panel, &ComponentPanel::signal_ComponentResult, this,
                [this](int c, int result) { add(QString("result %1 of %2").arg(result).arg(c)); });
        connect(&panel, &ComponentPanel::signal_Click, this, // before its label turns white
                [this] { add(coveredBands(panel).contains(-1) ? "click" : "late click"); });
        connect(&panel, &ComponentPanel::signal_Beep, this, [this] { add("beep"); });
    }
    void add(const QString& what) { entries << what + frameOf(panel); }
    const ComponentPanel& panel;
    QStringList entries;
};
} // namespace

class TestPanels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// What draws the surface without a window takes the panels' sizes for those of the forms. The
    /// forms have one style sheet, but for two outlines that the fader's is without.
    void forms()
    {
        for (const int component : {0, 9, 40})
            QCOMPARE(makePanel(component)->size(), panelSize(roster::kindOf(component)));
        QString sheet = makePanel(9)->styleSheet().simplified();
        QCOMPARE(makePanel(40)->styleSheet().simplified(), sheet);
        sheet.replace("vertical { background: black; border: 1px solid white;",
                      "vertical { background: black;");
        QCOMPARE(makePanel(0)->styleSheet().simplified(), sheet);
    }

    /// Exactly the messages of its own control are a component's own, on every channel: the channel
    /// button's are known by their channel, all others by their number.
    void acceptance()
    {
        for (int component = 0; component < 44; ++component) {
            const auto panel = makePanel(component);
            panel->slot_QueueComponent(component);
            const int own = passingMessages(component).first().getRawData()[1];
            for (const int kind : {0x80, 0x90, 0xA0, 0xB0, 0xE0})
                for (int i = 0; i < 16 * 128; ++i) {
                    const int channel = i / 128; // from 0
                    const int number = i % 128;
                    panel->slot_ReceiveMIDI({kind + channel, number, 0});
                    const bool isOwn = (component == 18 ? channel == 1 : number == own) &&
                                       (isButton(component) ? kind <= 0x90 : kind == 0xB0);
                    QVERIFY2((panel->coverage().first().covered == 1.0F) == isOwn,
                             qPrintable(QString("component %1").arg(component)));
                    if (isOwn)
                        panel->slot_Init();
                }
        }
    }

    /// A value covers its band once; the slider or dial follows all that is judged, in a covered
    /// band as well, and nothing else.
    void everyValue()
    {
        for (int component = 0; component < 44; ++component) {
            const auto panel = makePanel(component);
            const auto* display = panel->findChild<QAbstractSlider*>();
            QSignalSpy clicks(panel.get(), SIGNAL(signal_Click()));
            const auto message = passingMessages(component).at(component % 2); // note-on or -off
            const auto receive = [&](int value) {
                panel->slot_ReceiveMIDI({message.getRawData()[0], message.getRawData()[1], value});
                return display == nullptr || display->value() == value;
            };
            QVERIFY(receive(50) == isButton(component)); // not armed
            panel->slot_QueueComponent(component);
            for (int value = 0; value < 128; ++value) {
                QVector<int> bands{qMin(value / 10, 12)};
                if (isButton(component))
                    bands = value == 0 ? QVector{0} : value == 127 ? QVector{1} : QVector<int>{};
                QVERIFY(receive(value));
                QCOMPARE(coveredBands(*panel), bands);
                QVERIFY(isButton(component) || receive(10 * bands.first()));
                QVERIFY(receive(value));
                QCOMPARE(clicks.count(), bands.size());
                clicks.clear();
                panel->slot_Init();
                QVERIFY(display == nullptr || display->value() == value);
            }
        }
    }

    /// Only while the component before it is under test.
    void beep()
    {
        for (int component = 1; component < 44; ++component) {
            const auto panel = makePanel(component);
            const PanelJournal journal(*panel);
            const QString line = QString("next comp %1 %2").arg(component).arg(component - 1);
            QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
            for (const int other : {-2, -1, 1, 2, 1000, -1000}) {
                panel->slot_QueueComponent(component + other);
                panel->slot_ReceiveMIDI(passingMessages(component).first());
            }
            QCOMPARE(journal.entries, QStringList{"beep" + untested});
            QVERIFY(coveredBands(*panel).isEmpty());
        }
    }

    /// Under test, skipped and queued again, passed, reset: the signals in their order, and what is
    /// ignored.
    void life()
    {
        for (const int component : {4, 9, 10, 18})
            checkLife(component, "QFrame{border:none; background: blue;}");
        checkLife(40, "border:none; background: blue;");
    }

private:
    static void checkLife(int component, const QString& underTestStyle)
    {
        const QString underTest = ": " + underTestStyle + " below, opaque";
        auto messages = passingMessages(component);
        if (component == 10) // held when it is armed
            std::swap(messages.first(), messages.last());
        const auto panel = makePanel(component);
        PanelJournal journal(*panel);
        panel->slot_QueueComponent(component);
        panel->slot_ReceiveMIDI(messages.first());
        QStringList expected{"click" + underTest};
        for (const int other : {-1, 44, 1000000, component + 1}) {
            panel->slot_QueueComponent(other);
            panel->slot_Skip(other);
        }
        journal.add("still armed");
        panel->slot_Skip(component);
        expected << "still armed" + underTest << QString("result 2 of %1").arg(component) + done;

        panel->slot_QueueComponent(component);
        for (const MidiMessage& message : messages)
            panel->slot_ReceiveMIDI(message);
        journal.add("passed");
        for (int i = 1; i < messages.size(); ++i)
            expected << "click" + underTest;
        expected << QString("result 1 of %1").arg(component) + underTest << "passed" + done;

        for (const int queued : {component - 1, component}) {
            panel->slot_QueueComponent(queued);
            panel->slot_ReceiveMIDI(messages.first()); // no beep either
        }
        panel->slot_Skip(component);
        panel->slot_Init();
        QVERIFY(coveredBands(*panel).isEmpty());
        panel->slot_ReceiveMIDI(messages.first()); // still queued: judged without a new queueing
        expected << QString("result 2 of %1").arg(component) + done << "click" + untested;
        QCOMPARE(journal.entries, expected);
    }
};

QTEST_MAIN(TestPanels)
#include "test_panels.moc"
