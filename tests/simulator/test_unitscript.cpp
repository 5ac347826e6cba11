// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitfault.h"

#include "tests/support/station.h"

#include <QSet>
#include <QTest>

namespace
{
QByteArray bytesOf(const UnitStep& step)
{
    const auto* bytes = reinterpret_cast<const char*>(step.message.getRawData());
    return QByteArray(bytes, step.message.getRawDataSize()).toHex();
}

/// The bands that a script reaches of a component; a button is let go (0) and pressed fully (1).
QSet<int> bandsReached(const UnitScript& script, int component)
{
    const auto own = passingMessages(component).first();
    QSet<int> bands;
    for (const UnitStep& step : script) {
        const auto& message = step.message;
        if (step.action != UnitStep::Action::Send || message.getChannel() != own.getChannel())
            continue;
        if (message.isController() && own.isController() &&
            message.getControllerNumber() == own.getControllerNumber())
            bands << qMin(12, message.getControllerValue() / 10);
        if (message.isNoteOnOrOff() && own.isNoteOn() && message.getVelocity() % 127 == 0 &&
            (component == 18 || message.getNoteNumber() == own.getNoteNumber()))
            bands << message.getVelocity() / 127;
    }
    return bands;
}
} // namespace

/// The script against the numbers that the unit's firmware uses.
class TestUnitScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A unit with any fault anywhere leaves those bands uncovered that the table says, and none of
    /// another component.
    void faultsAndTheirBands()
    {
        for (const QString& name : unitfault::names()) {
            const Fault fault = unitfault::fromName(name).value();
            QVERIFY2(unitfault::applies(fault, unitfault::defaultComponent(fault)),
                     qPrintable(name));
            for (int faulty = 0; faulty <= 43; ++faulty)
                for (int c = 0; c <= 43 && unitfault::applies(fault, faulty); ++c) {
                    const UnitFault unit{fault, faulty};
                    QSet<int> expected;
                    for (int band = 0; band < (c >= 9 && c < 40 ? 2 : 13); ++band)
                        if (!unitfault::leavesUncovered(unit, c, band))
                            expected << band;
                    QVERIFY2(bandsReached(unitfault::scriptFor(c, unit), c) == expected,
                             qPrintable(QString("%1 in %2: %3").arg(name).arg(faulty).arg(c)));
                }
        }
        QVERIFY(!unitfault::fromName("Stuck").has_value());
    }

    void whereFaultsApply()
    {
        const auto places = [](Fault fault) {
            QString list;
            for (int c = -1; c <= 44; ++c)
                list += unitfault::applies(fault, c) ? 'x' : '-';
            return list;
        };
        QCOMPARE(places(Fault::Stuck), "-" + QString(39, 'x') + "-xxxx-");
        QCOMPARE(places(Fault::NoHighEnd), "-" + QString(9, 'x') + QString(31, '-') + "xxxx-");
        QCOMPARE(places(Fault::WeakButton), QString(10, '-') + QString(30, 'x') + "------");
        QCOMPARE(places(Fault::TooEarly), "-" + QString(38, 'x') + "--xxx--");
        QCOMPARE(places(Fault::Swapped), "-xxxxxxxx-xxxxxxxx--" + QString(19, 'x') + "--xxx--");
    }

    void steps()
    {
        QCOMPARE(bytesOf(unitscript::good(9).back()), QByteArray("800100"));
        QCOMPARE(bytesOf(unitscript::good(10).back()), QByteArray("900200"));
        QCOMPARE(unitscript::good(0).size(), std::size_t{256});
        const auto early = unitfault::scriptFor(4, {Fault::TooEarly, 4});
        QCOMPARE(bandsReached(early, 5), QSet<int>{0});
        QCOMPARE(bytesOf(early.front()), QByteArray("b00600"));
        const auto pulled = unitfault::scriptFor(1, {Fault::CablePulled, 1});
        QVERIFY(pulled.at(64).action == UnitStep::Action::Unplug);
        QVERIFY(pulled.at(65).action == UnitStep::Action::Replug);
        QVERIFY(unitfault::scriptFor(14, {Fault::Chatter, 14}).size() > 10);
        QVERIFY(unitfault::scriptFor(6, {Fault::Flood, 6}).size() > 2000);
    }
};

QTEST_GUILESS_MAIN(TestUnitScript)
#include "test_unitscript.moc"
