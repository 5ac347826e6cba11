// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "simulator/simulatedunit.h"
#include "tests/reliability/figures.h"
#include "tests/reliability/wirenoise.h"
#include "tests/statewatch.h"

#include <QTest>

namespace
{
MidiMessage messageOf(const QByteArray& bytes)
{
    return {bytes.constData(), bytes.size()};
}
} // namespace

class TestBadInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What the panels and the window say in millions of messages would drown everything else.
    void initTestCase()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }

    /// Straight into the callback, as a backend that checks nothing would call it.
    void intoTheCallback()
    {
        const int messages = figures::count(200000, 10000000);
        constexpr int betweenLooks = 1000;
        MainWindow window;
        const StateWatch watch(window);
        WireNoise noise(4);
        qint64 bytes = 0;
        int runs = 0;
        for (int i = 1; i <= messages; ++i) {
            const QByteArray message = noise.bytes();
            bytes += message.size();
            window.handleIncomingMidiMessage(nullptr, messageOf(message));
            // Buttons behind the notes that the noise reaches, and controls that it takes too long
            // to pass, are skipped, so that every panel meets it under test.
            if (i % betweenLooks != 0)
                continue;
            const QString problem = watch.problem();
            QVERIFY2(problem.isEmpty(), qPrintable(problem));
            if (watch.armed == 43) {
                window.slot_Init();
                ++runs;
            } else {
                window.slot_SkipCurrentSensorPressed();
            }
        }
        QVERIFY(runs > 0);
        figures::print(QStringLiteral("random messages into the MIDI callback"), messages, 0,
                       QStringLiteral("%1 bytes, %2 runs").arg(bytes).arg(runs));
    }

    /// Through the sequencer, its 256-byte pieces and JUCE's thread. Between the noise goes a row
    /// of numbered messages, which must all arrive, in order.
    void throughTheWire()
    {
        const int messages = figures::count(10000, 300000);
        constexpr int betweenMarks = 10;
        constexpr int markStatus = 0xBF;
        constexpr int markController = 120;
        MainWindow window;
        SimulatedUnit unit;
        QVERIFY(unit.plug());
        window.slot_PollDevices();
        const StateWatch watch(window);
        QVector<int> marks;
        QObject::connect(&window, &MainWindow::signal_DistributeMIDI, &watch,
                         [&](const MidiMessage& message) {
                             if (message.getRawData()[0] == markStatus &&
                                 message.getControllerNumber() == markController)
                                 marks << message.getControllerValue();
                         });

        WireNoise noise(5);
        QVector<int> sent;
        for (int i = 1; i <= messages; ++i) {
            QByteArray bytes = noise.bytes();
            bytes.replace(static_cast<char>(markController), static_cast<char>(markController + 1));
            unit.send(messageOf(bytes));
            if (i % betweenMarks == 0) {
                sent << sent.size() % 128;
                unit.send({markStatus, markController, sent.last()});
            }
            if (i % 1000 == 0) {
                QTRY_COMPARE_WITH_TIMEOUT(marks.size(), sent.size(), 30000);
                const QString problem = watch.problem();
                QVERIFY2(problem.isEmpty(), qPrintable(problem));
                if (watch.armed == 43)
                    window.slot_Init();
                else
                    window.slot_SkipCurrentSensorPressed();
            }
        }
        QCOMPARE(marks, sent);
        figures::print(
            QStringLiteral("random messages through the sequencer and JUCE's thread"), messages, 0,
            QStringLiteral("%1 numbered messages between them, all in order").arg(sent.size()));
    }
};

QTEST_MAIN(TestBadInput)
#include "test_badinput.moc"
