// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/simulator/runprogram.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace
{
ProgramResult runOnce(QStringList arguments)
{
    arguments.prepend(QStringLiteral("--once"));
    return runProgram(QStringLiteral(ZORVI_DEMO), arguments);
}

/// Of the part of the window that holds panels and nothing white of its own.
QHash<QRgb, int> pixelsByColour(const QString& path)
{
    const QImage image(path);
    constexpr int panelsHeight = 400;
    QHash<QRgb, int> pixels;
    for (int y = 0; y < qMin(image.height(), panelsHeight); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++pixels[image.pixel(x, y)];
    return pixels;
}
} // namespace

/// The program zorvi_demo: whole runs of the station, from the plugged-in unit to the log.
class TestZorviDemo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeRun();
    void faultyUnits_data();
    void faultyUnits();
    void failsWithoutALog();
    void failsWithoutAPlaceForPictures();
};

void TestZorviDemo::wholeRun()
{
    const QTemporaryDir folder;
    const auto result = runOnce({QStringLiteral("--output"), folder.path(),
                                 QStringLiteral("--serial"), QStringLiteral("DEMO_TEST")});
    QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
    QCOMPARE(result.output.count(QStringLiteral(" passed.")), 42);
    QVERIFY(result.output.contains(QStringLiteral("ZORVI_DEMO_TEST.txt")));

    const QRgb blue = qRgb(0, 0, 255);
    const QRgb white = qRgb(255, 255, 255);
    const auto start = pixelsByColour(folder.filePath(QStringLiteral("start.png")));
    const auto middle = pixelsByColour(folder.filePath(QStringLiteral("middle.png")));
    const auto end = pixelsByColour(folder.filePath(QStringLiteral("end.png")));
    // The veils are translucent: over black, green and dark come out as these.
    const QRgb green = qRgb(0, 200, 0);
    const QRgb dark = qRgb(16, 16, 16);
    constexpr int half = 60 * 270 / 2; // of a fader's panel
    QVERIFY(start[blue] > half && start[dark] > half && start[green] == 0);
    QVERIFY(middle[blue] > half && middle[green] > half && middle[dark] > half);
    QCOMPARE(start[white], 0);
    QVERIFY2(middle[white] >= 6 * 8 * 8, "the white squares of the covered bands");
    QVERIFY(end[blue] == 0 && end[green] > half && end[dark] < 100);
}

void TestZorviDemo::faultyUnits_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QVector<int>>("skipped");
    const auto row = [](const char* name, const char* arguments, const QVector<int>& skipped) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(' ') << skipped;
    };
    row("stuck first control", "--fault stuck --component 0", {0});
    row("stuck last control", "--fault stuck --component 43", {43});
    row("last button before the power button", "--fault weak-button --component 38", {38});
    row("channel button at a marked station", "--tarvek --fault weak-button --component 18", {18});
    row("swapped faders", "--fault swapped", {5, 6});
    row("cable pulled in the middle", "--fault cable-pulled", {});
    row("flood", "--fault flood", {});
}

void TestZorviDemo::faultyUnits()
{
    QFETCH(QStringList, arguments);
    QFETCH(QVector<int>, skipped);
    const QTemporaryDir folder;
    const auto result =
        runOnce(arguments << QStringLiteral("--output") << folder.path()
                          << QStringLiteral("--serial") << QStringLiteral("DEMO_TEST_FAULT"));
    QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
    QCOMPARE(result.output.count(QStringLiteral("Skip Sensor >>")), skipped.size());
    for (const int component : qAsConst(skipped))
        QVERIFY(result.output.contains(
            QStringLiteral("Component %1 was worked and did not pass").arg(component)));
}

void TestZorviDemo::failsWithoutALog()
{
    const QTemporaryDir folder;
    const auto result = runOnce({QStringLiteral("--output"), folder.path(),
                                 QStringLiteral("--serial"), QStringLiteral("no/such/folder")});
    QCOMPARE(result.exitStatus, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("there is no log")), qPrintable(result.errors));
}

void TestZorviDemo::failsWithoutAPlaceForPictures()
{
    const auto result = runOnce({QStringLiteral("--output"), QStringLiteral("/proc/pictures")});
    QCOMPARE(result.exitStatus, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("/proc/pictures")), qPrintable(result.errors));
}

QTEST_GUILESS_MAIN(TestZorviDemo)
#include "test_zorvi_demo.moc"
