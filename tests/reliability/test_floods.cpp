// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/reliability/figures.h"
#include "tests/station.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QSignalSpy>

#include <thread>

namespace
{
using Clock = std::chrono::steady_clock;

/// Every controller and value in turn: no message like the 16,383 before it.
MidiMessage numbered(qint64 number)
{
    return {0xB0, static_cast<int>(number / 128 % 128), static_cast<int>(number % 128)};
}

/// Sends numbered messages at an even pace from a thread of its own.
std::thread startSending(SimulatedUnit& unit, int perSecond, qint64 messages)
{
    return std::thread([&unit, perSecond, messages] {
        const auto begin = Clock::now();
        for (qint64 sent = 0; sent < messages; ++sent) {
            const auto due = begin + std::chrono::microseconds(sent * 1000000 / perSecond);
            if (due > Clock::now())
                std::this_thread::sleep_until(due);
            unit.send(numbered(sent));
        }
    });
}

/// Counts what arrives at the panels, and what of it is not the next message in the order sent.
class Order : public QObject
{
public:
    explicit Order(const MainWindow& window)
    {
        connect(&window, &MainWindow::signal_DistributeMIDI, this, [this](const MidiMessage& m) {
            const auto expected = numbered(received++);
            outOfOrder += m.getControllerNumber() == expected.getControllerNumber() &&
                                  m.getControllerValue() == expected.getControllerValue()
                              ? 0
                              : 1;
        });
    }
    qint64 received = 0;
    qint64 outOfOrder = 0;
};
} // namespace

class TestFloods : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        station::quiet();
        window = std::make_unique<MainWindow>();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QVERIFY(unit.plug());
        window->slot_PollDevices();
        QVERIFY(station::hears(*window, unit));
        // Qt's queue keeps the room that its longest backlog took: a second's flood at once.
        const Order warmUp(*window);
        startSending(unit, 1000000, 20000).join();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        QTRY_COMPARE(warmUp.received, 20000);
    }

    void cleanupTestCase() { window.reset(); }

    void flood_data()
    {
        QTest::addColumn<int>("perSecond");
        QTest::newRow("five DIN cables full") << 5000;
        QTest::newRow("twenty DIN cables full") << 20000;
    }

    /// More than a cable carries, while the operator goes on working.
    void flood()
    {
        QFETCH(int, perSecond);
        const qint64 messages = perSecond * qint64(figures::count(3, 60));
        constexpr int answerWithinMs = 200;
        const Order order(*window);
        const auto before = figures::Footprint::now();
        int clicks = 0;
        int late = 0;
        qint64 longest = 0;
        auto thread = startSending(unit, perSecond, messages);
        while (order.received < messages && clicks < 10000) {
            const qint64 answered = answerTimeMs();
            ++clicks;
            late += answered > answerWithinMs ? 1 : 0;
            longest = qMax(longest, answered);
            window->slot_Init(); // the fader is to be judged again
            const qint64 last = order.received;
            QTestEventLoop::instance().enterLoopMSecs(200);
            if (order.received == last && order.received < messages)
                break; // nothing comes any more
        }
        thread.join();
        QTRY_COMPARE(order.received, messages);
        const auto after = figures::Footprint::now();
        figures::print(QStringLiteral("messages at %1 a second").arg(perSecond), messages,
                       messages - order.received + order.outOfOrder,
                       QStringLiteral("before: %1; after: %2").arg(before.text(), after.text()));
        figures::print(QStringLiteral("clicks meanwhile: answered after 200 ms"), clicks, late,
                       QStringLiteral("longest %1 ms").arg(longest));
        QCOMPARE(order.outOfOrder, 0);
        // The backlog may have been longer still; the messages themselves would take far more.
        constexpr qint64 queueRoomKilobytes = 100000;
        figures::compareFlat(before, after, queueRoomKilobytes);
    }

    /// The window busy with something else: what came meanwhile is judged afterwards.
    void stall()
    {
        constexpr int perSecond = 1000;
        const int seconds = figures::count(1, 5);
        const Order order(*window);
        auto thread = startSending(unit, perSecond, perSecond * seconds);
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        QTRY_COMPARE(order.received, perSecond * seconds);
        thread.join();
        figures::print(
            QStringLiteral("messages while the window stood still for %1 s").arg(seconds),
            perSecond * seconds, perSecond * seconds - order.received + order.outOfOrder);
        QCOMPARE(order.outOfOrder, 0);
    }

private:
    /// From a mouse's press and release, as the platform reports them, to the slot that answers.
    qint64 answerTimeMs()
    {
        auto* box = window->findChild<QCheckBox*>(QStringLiteral("audioOnOff"));
        const QPointF place = box->mapTo(window.get(), QPoint(8, box->height() / 2));
        QSignalSpy answered(box, SIGNAL(clicked(bool)));
        auto* target = window->windowHandle();
        std::thread([target, place] {
            // What the platform plugins report to, as Qt Test declares it.
            qt_handleMouseEvent(target, place, place, Qt::LeftButton, Qt::LeftButton,
                                QEvent::MouseButtonPress, Qt::NoModifier, 0);
            qt_handleMouseEvent(target, place, place, Qt::NoButton, Qt::LeftButton,
                                QEvent::MouseButtonRelease, Qt::NoModifier, 0);
        }).detach();
        QElapsedTimer time;
        time.start();
        return answered.wait(10000) ? time.elapsed() : std::numeric_limits<qint64>::max();
    }

    SimulatedUnit unit;
    std::unique_ptr<MainWindow> window;
};

QTEST_MAIN(TestFloods)
#include "test_floods.moc"
