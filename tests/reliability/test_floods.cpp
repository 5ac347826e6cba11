// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/reliability/figures.h"
#include "tests/station.h"

#include <QCheckBox>
#include <QSignalSpy>

class TestFloods : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Ten seconds of a full cable arrive at once, while the window stands still. Afterwards a
    /// click is answered, every message has arrived, and no room is taken but the first flood's.
    void flood()
    {
        const int rounds = figures::count(3, 100);
        constexpr int perRound = 10000;
        station::quiet();
        MainWindow window;
        window.show();
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        QVERIFY(station::hears(window, unit));
        const station::Hearing hearing(window);
        auto* box = window.findChild<QCheckBox*>("audioOnOff");
        const QSignalSpy clicks(box, SIGNAL(clicked(bool)));
        figures::Footprint before{};
        for (int round = 1; round <= rounds; ++round) {
            for (int i = 0; i < perRound; ++i)
                unit.send({0xB0, i / 128 % 128, i % 128});
            QMetaObject::invokeMethod(box, "click", Qt::QueuedConnection);
            QTRY_COMPARE_WITH_TIMEOUT(clicks.count(), round, 30000);
            QTRY_COMPARE_WITH_TIMEOUT(hearing.count, round * perRound, 30000);
            window.slot_Init();
            if (round == 1)
                before = figures::Footprint::now();
        }
        figures::compareFlat(before, figures::Footprint::now());
        figures::print("messages that came at once, 10000 at a time", rounds * perRound, 0);
    }
};

QTEST_MAIN(TestFloods)
#include "test_floods.moc"
