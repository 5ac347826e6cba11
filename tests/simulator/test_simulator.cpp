// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/panelrun.h"
#include "simulator/unitplayer.h"
#include "tests/support/poll.h"

#include <QSignalSpy>

namespace
{
using Action = UnitStep::Action;

/// Whether a run can cover a band of a component when the component `faulty` has that fault.
bool canBeCovered(const QString& fault, int faulty, int component, int band)
{
    if (fault == "swapped")
        return component != faulty && component != faulty + 1;
    const bool isButton = faulty >= 9 && faulty < 40;
    const QMap<QString, bool> covered{{"stuck", band == 6 && !isButton},
                                      {"no-low-end", band != 0},
                                      {"no-high-end", band != 12},
                                      {"weak-button", band != 1}};
    return component != faulty || covered.value(fault, true);
}
} // namespace

class TestSimulator : public QObject
{
    Q_OBJECT

    const juce::ScopedJuceInitialiser_GUI juceLibrary;

private Q_SLOTS:
    /// The station's panels cover of a unit with a fault, on some component of each kind, what can
    /// be covered of it, and the demo takes that log and no other.
    void faults()
    {
        const QDateTime date({2026, 11, 21}, {7, 0});
        PanelRun panels;
        for (const QString& name : unitfault::names())
            for (const int faulty : {3, 4, 11, 14, 41}) {
                const UnitFault unit{unitfault::fromName(name).value_or(Fault::None), faulty};
                if (!unitfault::applies(unit.fault, faulty))
                    continue;
                const auto lines = testlog::lines("1", date, panels.coverageOf(unit, true));
                QByteArray log = testlog::bytes(lines);
                QCOMPARE(log,
                         expectedLog("1", "Sat Nov 21 07:00:00 2026", [&](int component, int band) {
                             return canBeCovered(name, faulty, component, band);
                         }));
                QCOMPARE(panels.differences(log, unit, true), QString());
                QCOMPARE(panels.differences(log, unit, false),
                         QString("component 18 differs in band 0 1"));
                log.replace(log.lastIndexOf("Range 7: 1"), 10, "Range 7: 0");
                QVERIFY(panels.differences(log, unit, true).endsWith(" differs in band 7"));
            }
    }

    void whereFaultsApply()
    {
        const QVector<std::pair<Fault, int>> impossible{
            {Fault::None, -1},     {Fault::None, 39},      {Fault::None, 44},
            {Fault::NoLowEnd, 9},  {Fault::NoHighEnd, 38}, {Fault::WeakButton, 8},
            {Fault::TooEarly, 38}, {Fault::TooEarly, 43},  {Fault::Swapped, 8},
            {Fault::Swapped, 17},  {Fault::Swapped, 18},   {Fault::WeakButton, 40}};
        for (const auto& [fault, component] : impossible)
            QVERIFY2(!unitfault::applies(fault, component), qPrintable(QString::number(component)));
        for (const QString& name : unitfault::names()) {
            const Fault fault = *unitfault::fromName(name);
            QVERIFY(unitfault::applies(fault, unitfault::defaultComponent(fault)));
        }
    }

    /// At its pace, with the cable's pauses; a script that is replaced is given up.
    void playsAScript()
    {
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        MainWindow window;
        station::labelAfterPoll(window);
        const station::ReceivedMessages received(window);
        UnitPlayer player(unit);
        const QSignalSpy finished(&player, SIGNAL(signal_Finished()));
        player.setPace(1);
        player.play(UnitScript(100, {Action::Send, {0xB0, 1, 1}}));
        player.setPace(1000);
        player.setCablePause(200);
        UnitScript script(500, {Action::Send, {0xB0, 2, 2}});
        script.push_back({Action::Unplug, {}});
        script.push_back({Action::Replug, {}});
        QElapsedTimer time;
        time.start();
        player.play(script);
        QTRY_VERIFY(!unit.isPlugged());
        QVERIFY2(time.elapsed() >= 450, "half a second of messages came too fast");
        QTRY_COMPARE(received.messages, QVector<QByteArray>(500, "\xB0\x02\x02"));
        QCOMPARE(finished.count(), 0);
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(unit.isPlugged() && !player.isPlaying());
    }
};

QTEST_MAIN(TestSimulator)
#include "test_simulator.moc"
