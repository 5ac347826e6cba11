// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"
#include "tests/support/station.h"

#include <QAbstractSlider>
#include <QFrame>
#include <QSignalSpy>

namespace
{
const QString untested = "QFrame{border:none; background: rgba(20,20,20,200);} on top";
const QString done = "QFrame{border:none; background: rgba(0,255,0,200);} on top";

std::unique_ptr<ComponentPanel> makePanel(int component)
{
    if (component < 9)
        return std::make_unique<Zorvi_0908_Fader>(nullptr, -1, component);
    if (component < 40)
        return std::make_unique<Zorvi_0908_Button>(nullptr, -1, component);
    return std::make_unique<Zorvi_0908_Rotary>(nullptr, -1, component);
}

/// The style of a panel's frame and its place among the panel's widgets.
QString frameOf(const ComponentPanel& panel)
{
    const auto* frame = panel.findChild<QFrame*>("frame");
    return frame->styleSheet() + (panel.children().last() == frame    ? " on top"
                                  : panel.children().first() == frame ? " at the bottom"
                                                                      : " between");
}
} // namespace

class TestPanels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Every component against every status, number and channel: exactly the messages of its own
    /// control are its own, the channel button's known by their channel, all others by their
    /// number.
    void acceptance()
    {
        for (int component = 0; component < 44; ++component) {
            const auto panel = makePanel(component);
            panel->slot_QueueComponent(component);
            const int own = passingMessages(component).first().getRawData()[1];
            for (int status = 0x80; status < 0xF0; ++status) {
                const int kind = status & 0xF0;
                const bool oneDataByte = kind == 0xC0 || kind == 0xD0;
                const bool rightKind =
                    component < 9 || component >= 40 ? kind == 0xB0 : kind == 0x80 || kind == 0x90;
                for (int number = 0; number < 128; ++number) {
                    panel->slot_ReceiveMIDI(oneDataByte ? MidiMessage(status, number)
                                                        : MidiMessage(status, number, 0));
                    const bool isOwn =
                        rightKind && (component == 18 ? (status & 0x0F) == 1 : number == own);
                    QVERIFY2(
                        panel->coverage().first().covered == (isOwn ? 1.0F : 0.0F),
                        qPrintable(QString("component %1, status %2").arg(component).arg(status)));
                    if (isOwn)
                        panel->slot_Init();
                }
            }
        }
    }

    void life_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<bool>("backwards");
        for (const int c : {4, 10, 18, 40})
            QTest::addRow("component %d", c) << c << false;
        QTest::newRow("button held when armed") << 10 << true;
    }

    /// Untested, under test, skipped and queued again, passed, reset: frame, labels, signals in
    /// their order, and what is ignored where.
    void life()
    {
        QFETCH(int, component);
        QFETCH(bool, backwards);
        auto messages = passingMessages(component);
        if (backwards)
            std::reverse(messages.begin(), messages.end());
        const QString underTest = component < 40
                                      ? "QFrame{border:none; background: blue;} at the bottom"
                                      : "border:none; background: blue; at the bottom";
        const auto panel = makePanel(component);
        QStringList signalled; // with what the panel showed at that moment
        connect(panel.get(), &ComponentPanel::signal_ComponentResult, this, [&](int c, int result) {
            signalled << QString("%1 %2 %3").arg(c).arg(result).arg(frameOf(*panel));
        });
        connect(panel.get(), &ComponentPanel::signal_Click, this,
                [&] { signalled << (coveredBands(*panel).contains(-1) ? "click" : "click late"); });
        connect(panel.get(), &ComponentPanel::signal_Beep, this, [&] { signalled << "beep"; });

        for (const int far : {component - 2, component + 1, component + 2, -2, 1000}) {
            panel->slot_QueueComponent(far); // not the one before: not a sound
            panel->slot_ReceiveMIDI(messages.first());
        }
        panel->slot_QueueComponent(component - 1);
        QTest::ignoreMessage(
            QtDebugMsg, qPrintable(QString("next comp %1 %2").arg(component).arg(component - 1)));
        panel->slot_ReceiveMIDI(messages.first());
        QCOMPARE(std::exchange(signalled, {}), QStringList("beep"));
        QVERIFY(coveredBands(*panel).isEmpty());
        QCOMPARE(frameOf(*panel), untested);

        panel->slot_QueueComponent(component);
        panel->slot_ReceiveMIDI(messages.first());
        for (const int other : {-1, 44, 1000000, component + 1}) {
            panel->slot_QueueComponent(other);
            panel->slot_Skip(other);
            QCOMPARE(frameOf(*panel), underTest);
        }
        panel->slot_Skip(component);
        QCOMPARE(frameOf(*panel), done);
        panel->slot_QueueComponent(component);
        QCOMPARE(frameOf(*panel), underTest);
        for (const MidiMessage& message : messages)
            panel->slot_ReceiveMIDI(message);
        // Each click comes before its label turns white, the results while the frame is as said.
        QStringList expected{"click", QString("%1 2 %2").arg(component).arg(done)};
        for (int i = 1; i < messages.size(); ++i)
            expected << "click";
        expected << QString("%1 1 %2").arg(component).arg(underTest);
        QCOMPARE(std::exchange(signalled, {}), expected);
        QCOMPARE(frameOf(*panel), done);

        // Passed: deaf even to what would beep, and blue but still passed when queued again.
        for (const int queued : {component - 1, component}) {
            panel->slot_QueueComponent(queued);
            panel->slot_ReceiveMIDI(messages.first());
        }
        QCOMPARE(frameOf(*panel), underTest);
        panel->slot_Skip(component); // and a skip still says 2 after 1
        QCOMPARE(signalled, QStringList(expected.at(1)));
        QCOMPARE(frameOf(*panel), done);

        panel->slot_Init();
        QCOMPARE(frameOf(*panel), untested);
        QVERIFY(coveredBands(*panel).isEmpty());
        panel->slot_ReceiveMIDI(messages.first()); // still queued: judged without a new queueing
        QCOMPARE(coveredBands(*panel).size(), 1);
    }

    void everyValue_data() { life_data(); }

    /// A value covers its band once; the slider or dial follows all that is judged, in a covered
    /// band as well, and nothing else.
    void everyValue()
    {
        QFETCH(int, component);
        QFETCH(bool, backwards);
        const auto messages = passingMessages(component);
        const auto* kind = (backwards ? messages.last() : messages.first()).getRawData();
        const auto panel = makePanel(component);
        const auto* display = panel->findChild<QAbstractSlider*>();
        QSignalSpy clicks(panel.get(), SIGNAL(signal_Click()));
        const auto receive = [&](int value) {
            panel->slot_ReceiveMIDI({kind[0], kind[1], value});
            return display == nullptr || display->value() == value;
        };
        QVERIFY(receive(50) == (display == nullptr)); // not armed
        panel->slot_QueueComponent(component);
        for (int value = 0; value < 128; ++value) {
            QVector<int> bands{qMin(value / 10, 12)};
            if (display == nullptr)
                bands = value == 0 ? QVector{0} : value == 127 ? QVector{1} : QVector<int>{};
            QVERIFY(receive(value));
            QVERIFY(display == nullptr || receive(10 * bands.first()));
            QVERIFY(receive(value));
            QCOMPARE(clicks.count(), bands.size());
            QCOMPARE(coveredBands(*panel), bands);
            clicks.clear();
            panel->slot_Init();
            QVERIFY(display == nullptr || display->value() == value);
        }
    }
};

QTEST_MAIN(TestPanels)
#include "test_panels.moc"
