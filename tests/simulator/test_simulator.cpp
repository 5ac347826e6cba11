// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/panelrun.h"
#include "tests/support/station.h"

namespace
{
/// Whether a run can cover a band of a component when the component `faulty` has that fault.
bool canBeCovered(Fault fault, int faulty, int component, int band)
{
    if (fault == Fault::Swapped)
        return component != faulty && component != faulty + 1;
    if (component != faulty)
        return true;
    const bool isButton = faulty >= 9 && faulty < 40;
    const QMap<Fault, bool> isCovered{{Fault::Stuck, band == 6 && !isButton},
                                      {Fault::NoLowEnd, band != 0},
                                      {Fault::NoHighEnd, band != 12},
                                      {Fault::WeakButton, band != 1}};
    return isCovered.value(fault, true);
}
} // namespace

class TestSimulator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The station's panels cover of a unit with a fault, on some component of each kind, what can
    /// be covered of it, and the demo accepts that log and no other.
    void faults()
    {
        const QDateTime date({2026, 11, 21}, {7, 0});
        PanelRun panels;
        for (const QString& name : unitfault::names()) {
            const Fault fault = *unitfault::fromName(name);
            QVERIFY(unitfault::applies(fault, unitfault::defaultComponent(fault)));
            for (const int faulty : {3, 4, 11, 14, 41}) {
                const UnitFault unit{fault, faulty};
                if (!unitfault::applies(fault, faulty))
                    continue;
                const auto lines = testlog::lines("1", date, panels.coverageOf(unit, true));
                QByteArray log = testlog::bytes(lines);
                const auto isCovered = [&](int component, int band) {
                    return canBeCovered(fault, faulty, component, band);
                };
                QCOMPARE(log, expectedLog("1", "Sat Nov 21 07:00:00 2026", isCovered));
                QCOMPARE(panels.differences(log, unit, true), QString());
                QCOMPARE(panels.differences(log, unit, false),
                         QString("component 18 differs in band 0 1"));
                log.replace(log.lastIndexOf("Range 7: 1"), 10, "Range 7: 0");
                QVERIFY(panels.differences(log, unit, true).endsWith(" differs in band 7"));
            }
        }
    }

    /// One line names the error.
    void rejectsBadOptions()
    {
        QVector<std::pair<QString, QByteArray>> options{{"--pace fast", "\"fast\""},
                                                        {"--pace 0", "--pace"},
                                                        {"--pace nan", "--pace"},
                                                        {"--fault broken", "no-low-end"},
                                                        {"--runs 1.5", "--runs"},
                                                        {"--delay -1", "--delay"},
                                                        {"--component 44", "--component"},
                                                        {"--component 39", "\"39\""},
                                                        {"--fault no-low-end --component 9", "9"},
                                                        {"--fault weak-button --component 8", "8"},
                                                        {"--fault too-early --component 43", "43"},
                                                        {"--fault swapped --component 8", "8"},
                                                        {"--fault swapped --component 17", "17"},
                                                        {"loud", "loud"},
                                                        {"--sound", "sound"}};
        if (!QFileInfo::exists("/dev/snd/seq"))
            options << std::pair("", "/dev/snd/seq");
        for (const auto& [arguments, error] : options) {
            station::Program unit(ZORVI_UNIT, arguments);
            QCOMPARE(unit.status(), 1);
            const QByteArray printed = unit.readAllStandardError();
            QVERIFY2(printed.contains(error) && printed.count('\n') == 1, printed);
        }
    }

    /// The program over the in-memory sequencer.
    void playsWholeRuns()
    {
        const QString options = "--runs 2 --delay 0 --pace 100000";
        for (const auto& [tarvek, components] : {std::pair("", 2 * 42), {" --tarvek", 2 * 43}}) {
            station::Program unit(ZORVI_UNIT_IN_MEMORY, options + tarvek);
            QCOMPARE(unit.status(), 0);
            QCOMPARE(unit.readAllStandardOutput().count("Component "), components);
        }
    }
};

QTEST_MAIN(TestSimulator)
#include "test_simulator.moc"
