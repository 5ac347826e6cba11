// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "benchmarks/row.h"
#include "yield/commands/reportfile.h"
#include "yield/intake/logimport.h"
#include "yield/store/database.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <map>
#include <random>

namespace
{
constexpr int logCount = 10000;
constexpr double mostSecondsPerLog = 20.0 / 200000; // a plant's logs of years within 20 s
constexpr int million = 1000000;

const QDateTime begin(QDate(2026, 1, 1), QTime(6, 0));

/// One attempt in twenty misses a band.
BandMarks marksOf(int unit)
{
    BandMarks marks = ~BandMarks();
    if (unit % 20 == 0)
        marks.reset(bandmarks::markIndex(3, unit % 13));
    return marks;
}

void writeLog(const QString& folder, int unit)
{
    testlog::Coverage coverage;
    const BandMarks marks = marksOf(unit);
    for (std::size_t mark = 0; mark < marks.size(); ++mark)
        coverage.at(static_cast<std::size_t>(bandmarks::bandOf(mark).componentNum))
            .append({0, 0, marks[mark] ? 1.0F : 0.0F});
    QFile file(folder + QString("/ZORVI_%1.txt").arg(unit));
    const QString serial = QString::number(unit);
    if (file.open(QIODevice::WriteOnly))
        file.write(testlog::lines(serial, begin.addSecs(unit), coverage).join('\n').toUtf8() +
                   '\n');
}

void importLogs(benchmark::State& state)
{
    const QTemporaryDir logs;
    for (int unit = 0; unit < logCount; ++unit)
        writeLog(logs.path(), unit);
    QString text;
    QTextStream stream(&text);
    int run = 0;
    while (state.KeepRunning()) {
        const QTemporaryDir folder;
        const QString database = folder.filePath(QString::number(++run));
        if (logimport::run({database, {"Line 1", false}, {logs.path()}}, stream, stream) != 0)
            return state.SkipWithError("the logs were not imported");
    }
    setPerIteration(state, logCount);
}

/// A year of three stations; one unit in ten of those that missed a band comes again.
void fill(Database& database, int attempts)
{
    constexpr int yearSeconds = 365 * 24 * 3600;
    constexpr int batch = 10000;
    std::mt19937 random{908};
    for (int first = 0; first < attempts; first += batch) {
        std::vector<StationLog> logs;
        for (int i = first; i < first + batch; ++i)
            logs.push_back({QString("0908-%1").arg(random() % 10 == 0 ? i / 20 * 20 : i, 8, 10),
                            begin.addSecs(qint64{yearSeconds} * i / attempts).toString(Qt::ISODate),
                            marksOf(i)});
        const auto station = static_cast<int>(random() % 3);
        attemptstore::store(database, {QString("Line %1").arg(station), true}, logs);
    }
}

/// A file with so many attempts; made when it is first asked for, gone at the end.
QString databaseOf(int attempts)
{
    static const QTemporaryDir folder;
    static std::map<int, QString> paths;
    QString& path = paths[attempts];
    if (path.isEmpty()) {
        path = folder.filePath(QString("%1.sqlite").arg(attempts));
        Database database(path, Database::Access::Write);
        fill(database, attempts);
    }
    return path;
}

void makeReport(benchmark::State& state)
{
    Database database(databaseOf(million), Database::Access::Read);
    while (state.KeepRunning()) {
        QBuffer page;
        page.open(QIODevice::WriteOnly);
        if (!writeReport(database, {}, page))
            state.SkipWithError("no report");
    }
}

/// The most memory that the program was seen with while it made a report.
void rememberReport(benchmark::State& state, int attempts)
{
    const QString database = databaseOf(attempts);
    double most = 0;
    while (state.KeepRunning()) {
        QElapsedTimer timer;
        timer.start();
        QProcess program;
        program.start(ZORVI_YIELD,
                      {"report", "--database", database, "--output", database + ".html"});
        while (!program.waitForFinished(1) && program.state() != QProcess::NotRunning)
            most = std::max(most, residentBytesOf(QByteArray::number(program.processId())));
        if (program.exitCode() != 0)
            state.SkipWithError("no report");
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    state.counters["resident"] = most;
}
} // namespace

void addYieldRows()
{
    addRow({"log read and stored", 0, mostSecondsPerLog}, importLogs);
    addSide({"report over 1,000,000 attempts", 0, 2}, "station", makeReport)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(5);
    for (const int attempts : {million / 10, million}) {
        const std::string name = "growth, report over attempts/" + std::to_string(attempts);
        const char* const text = name.data();
        benchmark::RegisterBenchmark(text,
                                     [attempts](auto& state) { rememberReport(state, attempts); })
            ->UseManualTime()
            ->Iterations(1);
    }
}
