// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFileInfo>
#include <QProcess>
#include <QTest>

namespace
{
struct Result {
    int exitStatus;
    QString output;
    QString errors;
};

Result run(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(ZORVI_UNIT), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, {}};
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
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
    const Result result = run(arguments);
    QCOMPARE(result.exitStatus, 1);
    QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
    QVERIFY2(!result.errors.contains(QStringLiteral("sequencer")), qPrintable(result.errors));
}

void TestZorviUnit::helpAndVersion()
{
    const Result help = run({QStringLiteral("--help")});
    QCOMPARE(help.exitStatus, 0);
    for (const char* option : {"--pace", "--fault", "--runs", "--delay", "cable-pulled"})
        QVERIFY2(help.output.contains(QLatin1String(option)), option);

    const Result version = run({QStringLiteral("--version")});
    QCOMPARE(version.exitStatus, 0);
    QCOMPARE(version.output.trimmed(), QStringLiteral("zorvi_unit " ZORVI_VERSION));
}

void TestZorviUnit::withoutASequencer()
{
    if (QFileInfo::exists(QStringLiteral("/dev/snd/seq")))
        QSKIP("this machine has a sequencer");
    const Result result = run({});
    QCOMPARE(result.exitStatus, 1);
    QCOMPARE(result.errors.count('\n'), 1); // ours alone, none of the system library's
    QVERIFY2(result.errors.contains(QStringLiteral("/dev/snd/seq")), qPrintable(result.errors));
    QVERIFY(result.output.isEmpty());
}

QTEST_GUILESS_MAIN(TestZorviUnit)
#include "test_zorvi_unit.moc"
