// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/reliability/childprocess.h"
#include "tests/reliability/figures.h"

#include <QTest>

#include <csignal>

/// However the station ends and whatever goes on meanwhile, it ends at once and in order.
class TestExits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        screen.start(QStringLiteral("Xvfb"),
                     {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                      QStringLiteral("0"), QStringLiteral("1280x800x24")});
        if (screen.waitForStarted() && screen.waitForReadyRead(ChildProcess::patienceMs))
            display =
                QStringLiteral(":") + QString::fromLatin1(screen.readAllStandardOutput().trimmed());
    }

    void cleanupTestCase()
    {
        screen.terminate();
        screen.waitForFinished(ChildProcess::patienceMs);
    }

    void exits_data()
    {
        QTest::addColumn<QString>("activity");
        QTest::addColumn<QString>("way");
        for (const char* activity : {"flood", "notice", "nothing"})
            for (const char* way : {"close", "manager", "signal"})
                QTest::addRow("%s, %s", activity, way)
                    << QString::fromLatin1(activity) << QString::fromLatin1(way);
    }

    void exits()
    {
        QFETCH(QString, activity);
        QFETCH(QString, way);
        const int rounds = figures::count(1, 17);
        if (way == QLatin1String("manager") && display.isEmpty())
            QSKIP("no Xvfb");

        int wrong = 0;
        for (int i = 0; i < rounds; ++i) {
            ChildProcess station;
            auto environment = QProcessEnvironment::systemEnvironment();
            if (way == QLatin1String("manager")) {
                environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
                environment.insert(QStringLiteral("DISPLAY"), display);
            }
            station.setProcessEnvironment(environment);
            QVERIFY(station.startAndWait(QStringLiteral(STATION_CHILD), {activity, way}));
            const bool bySignal = way == QLatin1String("signal");
            if (bySignal)
                station.terminate();
            QVERIFY2(station.waitForFinished(ChildProcess::patienceMs), "hangs");
            const bool asExpected =
                bySignal
                    ? station.exitStatus() == QProcess::CrashExit && station.exitCode() == SIGTERM
                    : station.exitStatus() == QProcess::NormalExit && station.exitCode() == 0;
            if (asExpected)
                continue;
            ++wrong;
            qWarning("exit code %d\n%s", station.exitCode(),
                     station.readAllStandardError().constData());
        }
        figures::print(QStringLiteral("exits: %1 going on, ended by %2").arg(activity, way), rounds,
                       wrong);
        QCOMPARE(wrong, 0);
    }

private:
    QProcess screen;
    QString display;
};

QTEST_GUILESS_MAIN(TestExits)
#include "test_exits.moc"
