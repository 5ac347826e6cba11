// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitscript.h"

#include <QRegularExpression>
#include <QTest>

namespace
{
/// Each step as the bytes on the wire, or as what happens to the cable.
QStringList inWords(const UnitScript& script)
{
    QStringList words;
    for (const UnitStep& step : script) {
        const auto* bytes = reinterpret_cast<const char*>(step.message.getRawData());
        if (step.action == UnitStep::Action::Send)
            words << QByteArray(bytes, step.message.getRawDataSize()).toHex();
        else
            words << (step.action == UnitStep::Action::Unplug ? "unplug" : "replug");
    }
    return words;
}

QStringList sweep(int controller, int lowest = 0, int highest = 127)
{
    QStringList up;
    QStringList down;
    for (int value = lowest; value <= highest; ++value) {
        up << QString::asprintf("b0%02x%02x", controller, value);
        down.prepend(up.last());
    }
    return up + down;
}
} // namespace

/// The script against the numbers that the unit's firmware uses.
class TestUnitScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void script_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("faultyComponent");
        QTest::addColumn<QStringList>("expected");
        const auto row = [](const char* name, int component, const char* fault, int faultyComponent,
                            const QStringList& expected) {
            QTest::newRow(name) << component << fault << faultyComponent << expected;
        };
        row("first fader", 0, "none", 0, sweep(1));
        row("last fader", 8, "none", 0, sweep(9));
        row("first rotary", 40, "none", 0, sweep(10));
        row("last rotary", 43, "none", 0, sweep(13));
        row("first button, note-off", 9, "none", 0, {"90017f", "800100"});
        row("second button, note-on", 10, "none", 0, {"90027f", "900200"});
        row("last before the channel button", 17, "none", 0, {"90097f", "800900"});
        row("the channel button", 18, "none", 0, {"91007f", "910000"});
        row("first behind the channel button", 19, "none", 0, {"900a7f", "800a00"});
        row("last tested button", 38, "none", 0, {"901d7f", "901d00"});
        row("power button", 39, "none", 0, {"901e7f", "801e00"});
        row("stuck button", 20, "stuck", 20, {});
        row("no low end", 3, "no-low-end", 3, sweep(4, 10));
        row("no high end", 41, "no-high-end", 41, sweep(11, 0, 119));
        row("a fault that sits elsewhere", 4, "no-low-end", 3, sweep(5));
        row("weak button", 20, "weak-button", 20, {"900b64", "900b00"});
        row("swapped with the next", 5, "swapped", 5, sweep(7));
        row("swapped with the one before", 6, "swapped", 5, sweep(6));
        row("behind a swap", 7, "swapped", 5, sweep(8));
        row("too early", 4, "too-early", 4, sweep(6).mid(0, 5) + sweep(5));
        row("cable pulled", 1, "cable-pulled", 1,
            sweep(2).mid(0, 64) + QStringList{"unplug", "replug"} + sweep(2));
    }

    void script()
    {
        QFETCH(int, component);
        QFETCH(QString, fault);
        QFETCH(int, faultyComponent);
        QFETCH(QStringList, expected);
        const UnitFault unit{unitfault::fromName(fault).value(), faultyComponent};
        QCOMPARE(inWords(unitscript::worked(component, unit)), expected);
    }

    void faultsOfManyMessages()
    {
        const QStringList stuck = inWords(unitscript::worked(3, {Fault::Stuck, 3}));
        QCOMPARE(stuck.count("b00440"), stuck.size());
        QVERIFY(!stuck.isEmpty());

        const QStringList chatter = inWords(unitscript::worked(14, {Fault::Chatter, 14}));
        QVERIFY(chatter.size() > 10);
        QCOMPARE(chatter.count("90067f"), chatter.count("900600"));
        QCOMPARE(chatter.last(), QStringLiteral("900600"));

        // Of a component's own messages a flood holds none but those of the one that is worked.
        const QStringList flood = inWords(unitscript::worked(6, {Fault::Flood, 6}));
        QVERIFY(flood.size() > 2000);
        QCOMPARE(flood.filter(QRegularExpression("^([89]|b.0[0-9a-d])")), sweep(7));
    }

    void everyFaultHasAPlaceToShow()
    {
        const QStringList names = unitfault::names();
        QCOMPARE(names.size(), 10);
        for (const QString& name : names) {
            const Fault fault = unitfault::fromName(name).value();
            QVERIFY2(unitfault::applies(fault, unitfault::usualComponent(fault)), qPrintable(name));
        }
        QVERIFY(unitfault::applies(Fault::Swapped, 19));
        QVERIFY(!unitfault::fromName(QStringLiteral("Stuck")).has_value());
    }
};

QTEST_GUILESS_MAIN(TestUnitScript)
#include "test_unitscript.moc"
