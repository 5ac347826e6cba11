// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_zorvi_0908_assemblytester_monitor.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"

#include <QThread>
#include <QtTest>

#include <atomic>
#include <thread>

using Monitor = Quillon_Zorvi_0908_AssemblyTester_Monitor;
using Processor = Quillon_Zorvi_0908_AssemblyTester_Processor;

namespace
{
const QVector<float> zeros(256, 0.0F);

struct OpenProcessor : Processor {
    using Processor::processedValues;
    using Processor::Processor;
    using Processor::rawValues;
    using Processor::tickTimer;
};

/// Counts the ticks that reach it, and tells on which thread they came.
struct CountingMonitor : Monitor {
    using Monitor::Monitor;
    using Monitor::processedValuesMutex;
    using Monitor::rawValuesMutex;
    void setProcessedSensorValues(QVector<float> values) override
    {
        Monitor::setProcessedSensorValues(values);
        tickThread = QThread::currentThread();
        ++ticks;
    }
    std::atomic<QThread*> tickThread{nullptr};
    std::atomic<int> ticks{0};
};
} // namespace

/// The monitor and the processor that ticks on it.
class TestSensorValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void casts();
    void constructionValues();
    void monitorStoresWhatItIsGiven_data();
    void monitorStoresWhatItIsGiven();
    void monitorLocksEachArrayOnItsOwn();
    void monitorUnderTwoThreads();
    void tickTakesAndPublishes();
    void ticksStopWithTheirThread();
};

void TestSensorValues::casts()
{
    Monitor monitor(nullptr);
    Processor processor(&monitor, nullptr);
    for (const char* name :
         {"Quillon_SensorValuesMonitor", "Quillon_Zorvi_0908_AssemblyTester_Monitor"})
        QCOMPARE(monitor.qt_metacast(name), static_cast<void*>(&monitor));
    QCOMPARE(processor.qt_metacast("Quillon_Zorvi_0908_AssemblyTester_Processor"),
             static_cast<void*>(&processor));
}

void TestSensorValues::constructionValues()
{
    CountingMonitor monitor(nullptr);
    const OpenProcessor processor(&monitor, nullptr);
    QCOMPARE(processor.rawValues, zeros);
    QCOMPARE(processor.processedValues, zeros);
    QVERIFY(processor.tickTimer.isActive());
    QCOMPARE(monitor.getRawSensorValues(), zeros);
    QCOMPARE(monitor.getProcessedSensorValues(), zeros);
    QCOMPARE(monitor.ticks.load(), 0);
}

void TestSensorValues::monitorStoresWhatItIsGiven_data()
{
    QTest::addColumn<QVector<float>>("values");
    QTest::newRow("empty") << QVector<float>();
    QTest::newRow("one") << QVector<float>{0.25F};
    QTest::newRow("more than at the start") << QVector<float>(1000, -1.0F);
}

void TestSensorValues::monitorStoresWhatItIsGiven()
{
    QFETCH(QVector<float>, values);
    Monitor monitor(nullptr);
    monitor.setRawSensorValues(values);
    QCOMPARE(monitor.getRawSensorValues(), values);
    QCOMPARE(monitor.getProcessedSensorValues(), zeros);
    monitor.setRawSensorValues(zeros);
    monitor.setProcessedSensorValues(values);
    QCOMPARE(monitor.getProcessedSensorValues(), values);
    QCOMPARE(monitor.getRawSensorValues(), zeros);
    QVector<float> taken = monitor.getProcessedSensorValues();
    taken.append(7.0F);
    QCOMPARE(monitor.getProcessedSensorValues(), values);
}

void TestSensorValues::monitorLocksEachArrayOnItsOwn()
{
    CountingMonitor monitor(nullptr);
    std::atomic<bool> processedDone{false};
    std::atomic<bool> rawDone{false};
    monitor.rawValuesMutex.lock();
    std::thread processed([&] {
        monitor.setProcessedSensorValues({1.0F});
        processedDone = monitor.getProcessedSensorValues().size() == 1;
    });
    std::thread raw([&] {
        monitor.setRawSensorValues({2.0F});
        rawDone = true;
    });
    QTRY_VERIFY(processedDone); // while the other lock is held
    QTest::qWait(50);           // time in which an unlocked setter would have come through
    QVERIFY(!rawDone);
    monitor.rawValuesMutex.unlock();
    processed.join();
    raw.join();
    QCOMPARE(monitor.getRawSensorValues(), QVector<float>{2.0F});
}

void TestSensorValues::monitorUnderTwoThreads()
{
    Monitor monitor(nullptr);
    std::thread writer([&monitor] {
        for (int i = 0; i < 50000; ++i)
            monitor.setRawSensorValues(QVector<float>(1 + i % 50, static_cast<float>(i % 50)));
        monitor.setRawSensorValues({});
    });
    int torn = 0;
    for (QVector<float> values = zeros; !values.isEmpty(); values = monitor.getRawSensorValues()) {
        const float wanted = values.size() == 256 ? 0.0F : static_cast<float>(values.size() - 1);
        torn += values.count(wanted) == values.size() ? 0 : 1;
    }
    writer.join();
    QCOMPARE(torn, 0);
}

void TestSensorValues::tickTakesAndPublishes()
{
    CountingMonitor monitor(nullptr);
    const QVector<float> raw{1.0F, 2.0F, 3.0F};
    monitor.setRawSensorValues(raw);
    monitor.setProcessedSensorValues(raw);
    monitor.ticks = 0;
    OpenProcessor processor(&monitor, nullptr);
    QCOMPARE(monitor.getProcessedSensorValues(), raw);
    QTRY_VERIFY(monitor.ticks > 0);
    QCOMPARE(processor.rawValues, raw);
    QCOMPARE(monitor.getProcessedSensorValues(), zeros);
    // Any timer event is a tick, whoever's timer it is.
    const int ticks = monitor.ticks;
    QTimerEvent foreign(-1);
    QCoreApplication::sendEvent(&processor, &foreign);
    QCOMPARE(monitor.ticks.load(), ticks + 1);
}

void TestSensorValues::ticksStopWithTheirThread()
{
    CountingMonitor monitor(nullptr);
    QThread thread;
    thread.start();
    Processor processor(&monitor, nullptr);
    processor.moveToThread(&thread);
    QTRY_VERIFY(monitor.ticks >= 3);
    QCOMPARE(monitor.tickThread.load(), &thread);
    thread.quit();
    QVERIFY(thread.wait(5000));
    const int ticks = monitor.ticks;
    QTest::qWait(50); // five ticks' time
    QCOMPARE(monitor.ticks.load(), ticks);
    // The thread took the timer with it; the processor says so when it goes.
    QTest::ignoreMessage(
        QtWarningMsg, "QBasicTimer::stop: Failed. Possibly trying to stop from a different thread");
}

QTEST_GUILESS_MAIN(TestSensorValues)
#include "test_sensorvalues.moc"
