// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitscript.h"

#include <QTest>

#include <set>

Q_DECLARE_METATYPE(Fault)

namespace
{
std::set<int> values(const UnitScript& script)
{
    std::set<int> seen;
    for (const UnitStep& step : script)
        seen.insert(step.message.getRawData()[2]);
    return seen;
}
} // namespace

/// The script against the numbers that the unit's firmware uses.
class TestUnitScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runOrder();
    void sweepsEveryValueUpAndDown_data();
    void sweepsEveryValueUpAndDown();
    void pressesAndReleases_data();
    void pressesAndReleases();
    void faultyPositions_data();
    void faultyPositions();
    void weakButton();
    void swappedControls();
    void tooEarlyTouchesTheNextControl();
    void cablePulledInTheMiddle();
    void chatterEndsReleased();
    void floodHoldsNothingOfAComponent();
    void faultNamesAreUnique();
    void whereFaultsApply_data();
    void whereFaultsApply();
};

void TestUnitScript::runOrder()
{
    std::vector<int> expected;
    for (int component = 0; component < 44; ++component)
        if (component != 39)
            expected.push_back(component);
    QCOMPARE(unitscript::runOrder(true), expected);
    expected.erase(expected.begin() + 18);
    QCOMPARE(unitscript::runOrder(false), expected);
}

void TestUnitScript::sweepsEveryValueUpAndDown_data()
{
    QTest::addColumn<int>("component");
    QTest::addColumn<int>("controller");
    QTest::newRow("first fader") << 0 << 1;
    QTest::newRow("last fader") << 8 << 9;
    QTest::newRow("first rotary") << 40 << 10;
    QTest::newRow("last rotary") << 43 << 13;
}

void TestUnitScript::sweepsEveryValueUpAndDown()
{
    QFETCH(int, component);
    QFETCH(int, controller);
    const UnitScript script = unitscript::good(component);
    QCOMPARE(script.size(), std::size_t{256});
    for (std::size_t i = 0; i < script.size(); ++i) {
        const int value = static_cast<int>(i < 128 ? i : 255 - i);
        QVERIFY(script[i].message.isControllerOfType(controller));
        QCOMPARE(script[i].message.getControllerValue(), value);
    }
}

void TestUnitScript::pressesAndReleases_data()
{
    QTest::addColumn<int>("component");
    QTest::addColumn<QByteArray>("pressed");
    QTest::addColumn<QByteArray>("released");
    const auto row = [](const char* name, int component, const char* pressed,
                        const char* released) {
        QTest::newRow(name) << component << QByteArray::fromHex(pressed)
                            << QByteArray::fromHex(released);
    };
    row("first button, note-off", 9, "90017f", "800100");
    row("second button, note-on", 10, "90027f", "900200");
    row("last before the channel button", 17, "90097f", "800900");
    row("the channel button", 18, "91007f", "910000");
    row("first behind the channel button", 19, "900a7f", "800a00");
    row("last tested button", 38, "901d7f", "901d00");
    row("power button", 39, "901e7f", "801e00");
}

void TestUnitScript::pressesAndReleases()
{
    QFETCH(int, component);
    QFETCH(QByteArray, pressed);
    QFETCH(QByteArray, released);
    const auto bytes = [](const UnitStep& step) {
        return QByteArray(reinterpret_cast<const char*>(step.message.getRawData()),
                          step.message.getRawDataSize());
    };
    const UnitScript script = unitscript::good(component);
    QCOMPARE(script.size(), std::size_t{2});
    QCOMPARE(bytes(script[0]), pressed);
    QCOMPARE(bytes(script[1]), released);
}

void TestUnitScript::faultyPositions_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("lowest");
    QTest::addColumn<int>("highest");
    QTest::newRow("stuck") << Fault::Stuck << 64 << 64;
    QTest::newRow("no low end") << Fault::NoLowEnd << 10 << 127;
    QTest::newRow("no high end") << Fault::NoHighEnd << 0 << 119;
}

void TestUnitScript::faultyPositions()
{
    QFETCH(Fault, fault);
    QFETCH(int, lowest);
    QFETCH(int, highest);
    const auto faulty = values(unitscript::worked(3, {fault, 3}));
    QCOMPARE(*faulty.begin(), lowest);
    QCOMPARE(*faulty.rbegin(), highest);
    QCOMPARE(static_cast<int>(faulty.size()), highest - lowest + 1);
    QCOMPARE(values(unitscript::worked(4, {fault, 3})).size(), std::size_t{128});
}

void TestUnitScript::weakButton()
{
    QCOMPARE(values(unitscript::worked(20, {Fault::WeakButton, 20})), (std::set<int>{0, 100}));
    QVERIFY(unitscript::worked(20, {Fault::Stuck, 20}).empty());
}

void TestUnitScript::swappedControls()
{
    const UnitFault swapped{Fault::Swapped, 5};
    QVERIFY(unitscript::worked(5, swapped).front().message.isControllerOfType(7));
    QVERIFY(unitscript::worked(6, swapped).front().message.isControllerOfType(6));
    QVERIFY(unitscript::worked(7, swapped).front().message.isControllerOfType(8));
}

void TestUnitScript::tooEarlyTouchesTheNextControl()
{
    const UnitScript script = unitscript::worked(4, {Fault::TooEarly, 4});
    QVERIFY(script.front().message.isControllerOfType(6));
    QVERIFY(script.back().message.isControllerOfType(5));
    QCOMPARE(script.size(), std::size_t{5 + 256});
}

void TestUnitScript::cablePulledInTheMiddle()
{
    const UnitScript script = unitscript::worked(1, {Fault::CablePulled, 1});
    QCOMPARE(script[63].message.getControllerValue(), 63);
    QVERIFY(script[64].action == UnitStep::Action::Unplug);
    QVERIFY(script[65].action == UnitStep::Action::Replug);
    QCOMPARE(script.size(), std::size_t{66 + 256});
}

void TestUnitScript::chatterEndsReleased()
{
    const UnitScript script = unitscript::worked(14, {Fault::Chatter, 14});
    QVERIFY(script.size() > 10);
    QCOMPARE(values(script), (std::set<int>{0, 127}));
    QVERIFY(script.back().message.isNoteOff(true));
}

void TestUnitScript::floodHoldsNothingOfAComponent()
{
    const UnitScript script = unitscript::worked(6, {Fault::Flood, 6});
    QVERIFY(script.size() > 2000);
    int judged = 0;
    for (const UnitStep& step : script) {
        const auto& message = step.message;
        QVERIFY(!message.isNoteOnOrOff());
        if (!message.isController() || message.getControllerNumber() > 13)
            continue;
        QCOMPARE(message.getControllerNumber(), 7);
        ++judged;
    }
    QCOMPARE(judged, 256);
}

void TestUnitScript::faultNamesAreUnique()
{
    QStringList names = unitfault::names();
    QCOMPARE(names.removeDuplicates(), 0);
    QCOMPARE(names.size(), 10);
    for (const QString& name : qAsConst(names)) {
        const auto fault = unitfault::fromName(name);
        QVERIFY(fault.has_value());
        QVERIFY(unitfault::applies(*fault, unitfault::usualComponent(*fault)));
    }
    QVERIFY(!unitfault::fromName(QStringLiteral("Stuck")).has_value());
}

void TestUnitScript::whereFaultsApply_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("component");
    QTest::addColumn<bool>("applies");
    QTest::newRow("no such component") << Fault::Stuck << 44 << false;
    QTest::newRow("negative component") << Fault::Stuck << -1 << false;
    QTest::newRow("power button") << Fault::Stuck << 39 << false;
    QTest::newRow("weak fader") << Fault::WeakButton << 0 << false;
    QTest::newRow("low end of a button") << Fault::NoLowEnd << 9 << false;
    QTest::newRow("rotary 43 and none behind it") << Fault::Swapped << 43 << false;
    QTest::newRow("fader 8 and the first button") << Fault::Swapped << 8 << false;
    QTest::newRow("button 17 and the channel button") << Fault::Swapped << 17 << false;
    QTest::newRow("button 19 and 20") << Fault::Swapped << 19 << true;
    QTest::newRow("too early for the power button") << Fault::TooEarly << 38 << false;
}

void TestUnitScript::whereFaultsApply()
{
    QFETCH(Fault, fault);
    QFETCH(int, component);
    QFETCH(bool, applies);
    QCOMPARE(unitfault::applies(fault, component), applies);
}

QTEST_GUILESS_MAIN(TestUnitScript)
#include "test_unitscript.moc"
