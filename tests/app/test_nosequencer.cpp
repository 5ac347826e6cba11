// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sequencer/porttable.h"
#include "tests/support/station.h"

/// In a program without other tests: JUCE opens the sequencer anew only while it has no port.
class TestNoSequencer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesLater()
    {
        auto& ports = memorysequencer::portTable();
        ports.setAbsent(true);
        MainWindow window;
        QCOMPARE(station::labelAfterPoll(window), QString("Device: NOT CONNECTED"));
        QCOMPARE(ports.clientCount(), 0);
        ports.setAbsent(false);
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        QCOMPARE(station::labelAfterPoll(window), QString("Device: CONNECTED"));
        QVERIFY(station::hears(window, unit));
    }
};

QTEST_MAIN(TestNoSequencer)
#include "test_nosequencer.moc"
