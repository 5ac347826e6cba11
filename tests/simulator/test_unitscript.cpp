// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/unitscript.h"

#include "tests/passingmessages.h"

#include <QSet>
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

QStringList sweep(int controller)
{
    QStringList up;
    QStringList down;
    for (int value = 0; value <= 127; ++value) {
        up << QString::asprintf("b0%02x%02x", controller, value);
        down.prepend(up.last());
    }
    return up + down;
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
    void script()
    {
        const auto words = [](int component, Fault fault = Fault::None) {
            return inWords(unitscript::worked(component, {fault, component}));
        };
        QCOMPARE(words(9).join(' '), QString("90017f 800100"));  // let go by a note-off
        QCOMPARE(words(10).join(' '), QString("90027f 900200")); // or a note-on
        QCOMPARE(words(20, Fault::WeakButton).join(' '), QString("900b64 900b00"));
        QCOMPARE(words(4, Fault::TooEarly), sweep(6).mid(0, 5) + sweep(5));
        QCOMPARE(words(1, Fault::CablePulled),
                 sweep(2).mid(0, 64) + QString("unplug replug").split(' ') + sweep(2));
        QVERIFY(words(14, Fault::Chatter).size() > 10);
        QVERIFY(words(6, Fault::Flood).size() > 2000);
    }

    /// What a unit with any fault anywhere sends leaves uncovered what the table says, and no band
    /// of another component.
    void faultsAndTheirBands()
    {
        for (const QString& name : unitfault::names()) {
            const Fault fault = unitfault::fromName(name).value();
            QVERIFY2(unitfault::applies(fault, unitfault::usualComponent(fault)), qPrintable(name));
            for (int faulty = 0; faulty < 43; ++faulty) {
                if (!unitfault::applies(fault, faulty))
                    continue;
                for (const int c : {faulty, (faulty + 1) % 39, (faulty + 2) % 39}) {
                    const UnitFault unit{fault, faulty};
                    QSet<int> expected;
                    for (int band = 0; band < (c >= 9 && c < 40 ? 2 : 13); ++band)
                        if (!unitfault::leavesUncovered(unit, c, band))
                            expected << band;
                    QVERIFY2(bandsReached(unitscript::worked(c, unit), c) == expected,
                             qPrintable(QString("%1 in %2: %3").arg(name).arg(faulty).arg(c)));
                }
            }
        }
    }

    void whereFaultsApply()
    {
        const auto places = [](Fault fault) {
            QString list;
            for (int c = -1; c <= 44; ++c)
                list += unitfault::applies(fault, c) ? 'x' : '-';
            return list;
        };
        QCOMPARE(unitfault::names().size(), 10);
        QVERIFY(!unitfault::fromName("Stuck").has_value());
        QCOMPARE(places(Fault::Stuck), "-" + QString(39, 'x') + "-xxxx-");
        QCOMPARE(places(Fault::NoHighEnd), "-" + QString(9, 'x') + QString(31, '-') + "xxxx-");
        QCOMPARE(places(Fault::WeakButton), QString(10, '-') + QString(30, 'x') + "------");
        QCOMPARE(places(Fault::TooEarly), "-" + QString(38, 'x') + "--xxx--");
        QCOMPARE(places(Fault::Swapped), "-xxxxxxxx-xxxxxxxx--" + QString(19, 'x') + "--xxx--");
    }
};

QTEST_GUILESS_MAIN(TestUnitScript)
#include "test_unitscript.moc"
