// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFileInfo>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace
{
/// What a program did that was run to its end.
struct ProgramResult {
    int exitStatus; ///< -1 if it crashed or did not end.
    QString output;
    QString errors;
};

/// arguments: parted by single blanks; none if empty.
ProgramResult runProgram(const QString& program, const QString& arguments)
{
    constexpr int patienceMs = 90000;
    QProcess process;
    process.start(program, arguments.split(' ', Qt::SkipEmptyParts));
    if (!process.waitForFinished(patienceMs) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, {}};
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
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

/// The programs zorvi_unit and zorvi_demo as people start them, the arguments in the rows' names.
class TestPrograms : public QObject
{
    Q_OBJECT

    const QTemporaryDir folder;

    ProgramResult demonstrate(const QString& arguments)
    {
        return runProgram(ZORVI_DEMO, "--once --output " + folder.path() + ' ' + arguments);
    }

private Q_SLOTS:
    void unitRefusesBadOptions_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("--pace fast") << "\"fast\"";
        QTest::newRow("--pace 0") << "--pace";
        QTest::newRow("--pace nan") << "--pace";
        QTest::newRow("--fault broken") << "no-low-end";
        QTest::newRow("--runs 0") << "--runs";
        QTest::newRow("--runs 1.5") << "--runs";
        QTest::newRow("--delay -1") << "--delay";
        QTest::newRow("--fault stuck --component 39") << "\"39\""; // the power button
        QTest::newRow("--fault stuck --component 44") << "\"44\"";
        QTest::newRow("--fault stuck --component -1") << "\"-1\"";
        QTest::newRow("--fault weak-button --component 3") << "weak-button";
        QTest::newRow("--fault no-low-end --component 9") << "no-low-end";
        QTest::newRow("--fault too-early --component 38") << "\"38\""; // none behind it
        QTest::newRow("--fault swapped --component 43") << "\"43\"";
        QTest::newRow("--fault swapped --component 8") << "\"8\"";   // fader and button
        QTest::newRow("--fault swapped --component 17") << "\"17\""; // the channel button
        QTest::newRow("--sound") << "sound";
        QTest::newRow("loud") << "loud";
    }

    void unitRefusesBadOptions()
    {
        QFETCH(QString, named);
        const auto result = runProgram(ZORVI_UNIT, QTest::currentDataTag());
        QCOMPARE(result.exitStatus, 1);
        QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
        QVERIFY2(!result.errors.contains("sequencer"), qPrintable(result.errors));
    }

    void unitTellsItsOptions()
    {
        const auto help = runProgram(ZORVI_UNIT, "--help");
        QCOMPARE(help.exitStatus, 0);
        for (const char* option : {"--pace", "--fault", "--runs", "--delay", "cable-pulled"})
            QVERIFY2(help.output.contains(option), option);

        const auto version = runProgram(ZORVI_UNIT, "--version");
        QCOMPARE(version.exitStatus, 0);
        QCOMPARE(version.output.trimmed(), QStringLiteral("zorvi_unit " ZORVI_VERSION));
    }

    void demoTellsItsOptionsWithoutAScreen()
    {
        const QString demo = "-u DISPLAY QT_QPA_PLATFORM=xcb " ZORVI_DEMO;
        QVERIFY(runProgram("env", demo + " --help").output.contains("--once"));
        const auto version = runProgram("env", demo + " --version");
        QCOMPARE(version.exitStatus, 0);
        QCOMPARE(version.output.trimmed(), QStringLiteral("zorvi_demo " ZORVI_VERSION));
    }

    void unitNeedsASequencer()
    {
        if (QFileInfo::exists("/dev/snd/seq"))
            QSKIP("this machine has a sequencer");
        const auto result = runProgram(ZORVI_UNIT, "");
        QCOMPARE(result.exitStatus, 1);
        QCOMPARE(result.errors.count('\n'), 1); // ours alone, none of the system library's
        QVERIFY2(result.errors.contains("/dev/snd/seq"), qPrintable(result.errors));
        QVERIFY(result.output.isEmpty());
    }

    void unitPlaysWholeRuns_data()
    {
        QTest::addColumn<bool>("marker");
        QTest::newRow("--runs 2 --delay 0 --pace 100000") << false;
        QTest::newRow("--runs 2 --delay 0 --pace 100000 --tarvek") << true;
    }

    /// The same program over the sequencer in memory.
    void unitPlaysWholeRuns()
    {
        QFETCH(bool, marker);
        const auto result = runProgram(ZORVI_UNIT_IN_MEMORY, QTest::currentDataTag());
        QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
        QVector<int> components;
        const QRegularExpression progress("^Component (\\d+) ",
                                          QRegularExpression::MultilineOption);
        for (auto match = progress.globalMatch(result.output); match.hasNext();)
            components << match.next().captured(1).toInt();
        QVector<int> expected;
        for (int component = 0; component < 44; ++component)
            if (component != 39 && (component != 18 || marker))
                expected << component;
        QCOMPARE(components, expected + expected);
    }

    void demoPlaysAWholeRun()
    {
        const auto result = demonstrate("--serial DEMO_TEST");
        QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
        QCOMPARE(result.output.count(" passed."), 42);
        QVERIFY(result.output.contains("ZORVI_DEMO_TEST.txt"));

        const QRgb blue = qRgb(0, 0, 255);
        const QRgb white = qRgb(255, 255, 255);
        // The veils are translucent: over black, green and dark come out as these.
        const QRgb green = qRgb(0, 200, 0);
        const QRgb dark = qRgb(16, 16, 16);
        const auto start = pixelsByColour(folder.filePath("start.png"));
        const auto middle = pixelsByColour(folder.filePath("middle.png"));
        const auto end = pixelsByColour(folder.filePath("end.png"));
        constexpr int half = 60 * 270 / 2; // of a fader's panel
        QVERIFY(start[blue] > half && start[dark] > half && start[green] == 0);
        QVERIFY(middle[blue] > half && middle[green] > half && middle[dark] > half);
        QCOMPARE(start[white], 0);
        QVERIFY2(middle[white] >= 6 * 8 * 8, "the white squares of the covered bands");
        QVERIFY(end[blue] == 0 && end[green] > half && end[dark] < 100);
    }

    void demoOfFaultyUnits_data()
    {
        QTest::addColumn<QVector<int>>("skipped");
        QTest::newRow("--fault stuck --component 0") << QVector{0};
        QTest::newRow("--fault stuck --component 43") << QVector{43};
        QTest::newRow("--fault weak-button --component 38") << QVector{38};
        QTest::newRow("--tarvek --fault weak-button --component 18") << QVector{18};
        QTest::newRow("--fault swapped") << QVector{5, 6};
        QTest::newRow("--fault cable-pulled") << QVector<int>{};
        QTest::newRow("--fault flood") << QVector<int>{};
    }

    void demoOfFaultyUnits()
    {
        QFETCH(QVector<int>, skipped);
        const auto result = demonstrate(QTest::currentDataTag());
        QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
        QCOMPARE(result.output.count("Skip Sensor >>"), skipped.size());
        for (const int component : qAsConst(skipped))
            QVERIFY(result.output.contains(
                QStringLiteral("Component %1 was worked and did not pass").arg(component)));
    }

    void demoThatFails_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("--serial no/such/folder") << "there is no log";
        QTest::newRow("--output /proc/pictures") << "/proc/pictures"; // the last one counts
    }

    void demoThatFails()
    {
        QFETCH(QString, named);
        const auto result = demonstrate(QTest::currentDataTag());
        QCOMPARE(result.exitStatus, 1);
        QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
    }
};

QTEST_GUILESS_MAIN(TestPrograms)
#include "test_programs.moc"
