// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/app/expectedlog.h"
#include "tests/passingmessages.h"
#include "tests/reliability/figures.h"
#include "tests/statewatch.h"
#include "tests/station.h"

#include <QElapsedTimer>

/// A station that tests one unit after the other all day.
class TestLongRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { station::quiet(); }

    void unitAfterUnit()
    {
        const int runs = figures::count(10, 1000);
        const int tenth = runs / 10;
        MainWindow window;
        window.show();
        SimulatedUnit unit;
        const StateWatch watch(window);
        QTimer answer;
        answer.callOnTimeout(&window, [] {
            if (auto* notice = station::openNotice())
                notice->accept();
        });
        answer.start(10);
        int wrongLogs = 0;
        figures::Footprint before;
        QVector<qint64> milliseconds;
        for (int run = 1; run <= runs; ++run) {
            const QByteArray serial = "long run " + QByteArray::number(run);
            const QString path = QCoreApplication::applicationDirPath() + "/Logs/ZORVI_" +
                                 QString::fromLatin1(serial) + ".txt";
            QFile::remove(path);
            station::setSerial(window, QString::fromLatin1(serial));
            QVERIFY(unit.plug());
            window.slot_PollDevices();

            QElapsedTimer time;
            time.start();
            for (int c = 0; c <= 43; ++c)
                if (c != 18 && c != 39)
                    for (const auto& message : passingMessages(c))
                        unit.send(message);
            QTRY_VERIFY(QFile::exists(path));
            milliseconds << time.elapsed();
            unit.unplug();
            window.slot_PollDevices();
            QTRY_COMPARE(watch.armed, 0);

            const QString problem = watch.problem();
            QVERIFY2(problem.isEmpty(), qPrintable(problem));
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray log = file.readAll();
            const QByteArray date = log.split('\n').value(3).split('\t').value(2);
            wrongLogs += log == expectedLog(serial, date, [](int c) { return c != 18; }) ? 0 : 1;
            QVERIFY(file.remove());
            if (run == tenth)
                before = figures::Footprint::now();
        }
        const auto after = figures::Footprint::now();
        const auto median = [](QVector<qint64> values) {
            std::sort(values.begin(), values.end());
            return values.at(values.size() / 2);
        };
        figures::print(QStringLiteral("complete runs: log wrong"), runs, wrongLogs,
                       QStringLiteral("median time of the first tenth %1 ms, of the last %2 ms; "
                                      "run %3: %4; run %5: %6")
                           .arg(median(milliseconds.mid(0, tenth)))
                           .arg(median(milliseconds.mid(runs - tenth)))
                           .arg(tenth)
                           .arg(before.text())
                           .arg(runs)
                           .arg(after.text()));
        QCOMPARE(wrongLogs, 0);
        figures::compareFlat(before, after);
    }
};

QTEST_MAIN(TestLongRun)
#include "test_longrun.moc"
