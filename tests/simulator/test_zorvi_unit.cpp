// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/simulator/runprogram.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

namespace
{
ProgramResult run(const QStringList& arguments)
{
    return runProgram(QStringLiteral(ZORVI_UNIT), arguments);
}
} // namespace

/// The program zorvi_unit as an operator starts it.
class TestZorviUnit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void badOptions_data();
    void badOptions();
    void helpAndVersion();
    void withoutASequencer();
    void wholeRuns();
};

void TestZorviUnit::badOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    const auto row = [](const char* name, const char* arguments, const char* named) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(' ') << QString(named);
    };
    row("pace is no number", "--pace fast", "\"fast\"");
    row("pace of nothing", "--pace 0", "--pace");
    row("pace is not finite", "--pace nan", "--pace");
    row("unknown fault", "--fault broken", "no-low-end");
    row("no run at all", "--runs 0", "--runs");
    row("half a run", "--runs 1.5", "--runs");
    row("negative delay", "--delay -1", "--delay");
    row("a fader as a button", "--fault weak-button --component 3", "weak-button");
    row("the power button", "--fault stuck --component 39", "\"39\"");
    row("unknown option", "--sound", "sound");
    row("stray argument", "loud", "loud");
}

void TestZorviUnit::badOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const auto result = run(arguments);
    QCOMPARE(result.exitStatus, 1);
    QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
    QVERIFY2(!result.errors.contains(QStringLiteral("sequencer")), qPrintable(result.errors));
}

void TestZorviUnit::helpAndVersion()
{
    const auto help = run({QStringLiteral("--help")});
    QCOMPARE(help.exitStatus, 0);
    for (const char* option : {"--pace", "--fault", "--runs", "--delay", "cable-pulled"})
        QVERIFY2(help.output.contains(QLatin1String(option)), option);

    const auto version = run({QStringLiteral("--version")});
    QCOMPARE(version.exitStatus, 0);
    QCOMPARE(version.output.trimmed(), QStringLiteral("zorvi_unit " ZORVI_VERSION));
}

void TestZorviUnit::withoutASequencer()
{
    if (QFileInfo::exists(QStringLiteral("/dev/snd/seq")))
        QSKIP("this machine has a sequencer");
    const auto result = run({});
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(result.errors.count('\n'), 1); // ours alone, none of the system library's
    QVERIFY2(result.errors.contains(QStringLiteral("/dev/snd/seq")), qPrintable(result.errors));
    QVERIFY(result.output.isEmpty());
}

/// The same program over the sequencer in memory.
void TestZorviUnit::wholeRuns()
{
    const auto result = runProgram(
        QStringLiteral(ZORVI_UNIT_IN_MEMORY),
        QString(QStringLiteral("--runs 2 --delay 0 --pace 100000")).split(QLatin1Char(' ')));
    QVERIFY2(result.exitStatus == 0, qPrintable(result.errors));
    QVector<int> components;
    const QRegularExpression progress(QStringLiteral("^Component (\\d+) "),
                                      QRegularExpression::MultilineOption);
    for (auto match = progress.globalMatch(result.output); match.hasNext();)
        components << match.next().captured(1).toInt();
    QVector<int> expected;
    for (int run = 0; run < 2; ++run)
        for (int component = 0; component < 44; ++component)
            if (component != 18 && component != 39)
                expected << component;
    QCOMPARE(components, expected);
}

QTEST_GUILESS_MAIN(TestZorviUnit)
#include "test_zorvi_unit.moc"
