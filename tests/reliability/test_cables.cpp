// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"
#include "tests/passingmessages.h"
#include "tests/reliability/figures.h"
#include "tests/station.h"

#include <thread>

/// The cable is pulled and put back again and again, whatever goes on.
class TestCables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { station::quiet(); }

    void cycles()
    {
        const int cycles = figures::count(200, 1000);
        const int settled = cycles / 10;
        MainWindow window;
        window.show();
        // Keeps JUCE's link to the sequencer open, and with it the thread that takes its time to
        // end.
        SimulatedUnit bystander("Bystander");
        QVERIFY(bystander.plug());
        SimulatedUnit unit;
        figures::Footprint before;
        std::size_t clientsBefore = 0;
        int wrongLabels = 0;
        int deaf = 0;
        const auto expectLabel = [&](const char* text) {
            wrongLabels += station::deviceLabel(window) == QLatin1String(text) ? 0 : 1;
        };
        const auto expectLink = [&](bool plugged) {
            window.slot_PollDevices();
            expectLabel(plugged ? "Device: CONNECTED" : "Device: NOT CONNECTED");
        };
        const auto plugAndListen = [&] {
            QVERIFY(unit.plug());
            expectLink(true);
            deaf += station::hears(window, unit) ? 0 : 1;
        };

        for (int i = 0; i < cycles; ++i) {
            if (i == settled) {
                before = figures::Footprint::now();
                clientsBefore = memorysequencer::clientCount();
            }
            plugAndListen();
            switch (i % 5) {
            case 0: // nothing else
                unit.unplug();
                break;
            case 1: // within a sweep, on the unit's own time
                std::thread([&] {
                    for (int value = 0; value < 100; ++value)
                        unit.send({0xB0, 1, value});
                    unit.unplug();
                }).join();
                break;
            case 2: // back before anybody looks: never seen to go
                unit.unplug();
                QVERIFY(unit.plug());
                expectLink(true);
                unit.unplug();
                break;
            case 3: // while the notice is open
                QTimer::singleShot(0, &window, [&] {
                    unit.unplug();
                    expectLink(false);
                    plugAndListen();
                    unit.unplug();
                    station::openNotice()->accept();
                });
                window.slot_TestComplete();
                break;
            default: // and once more at once
                unit.unplug();
                expectLink(false);
                plugAndListen();
                unit.unplug();
            }
            expectLink(false);
        }

        const auto after = figures::Footprint::now();
        figures::print(QStringLiteral("cable pulled and put back: label wrong"), cycles,
                       wrongLabels);
        figures::print(QStringLiteral("cable put back: deaf afterwards"), cycles, deaf,
                       QStringLiteral("cycle %1: %2; cycle %3: %4")
                           .arg(settled)
                           .arg(before.text())
                           .arg(cycles)
                           .arg(after.text()));
        QCOMPARE(wrongLabels, 0);
        QCOMPARE(deaf, 0);
        QCOMPARE(std::size_t(memorysequencer::clientCount()), clientsBefore);
        figures::compareFlat(before, after);
    }
};

QTEST_MAIN(TestCables)
#include "test_cables.moc"
