// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/row.h"
#include "tests/yield/unitlogs.h"
#include "yield/intake/logimport.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QProcess>
#include <QTemporaryDir>

#include <random>

#include <sys/resource.h>

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

void importLogs(benchmark::State& state)
{
    const QTemporaryDir logs;
    for (int unit = 0; unit < logCount; ++unit)
        testlog::write(logs.filePath(QString("%1.txt").arg(unit)),
                       unitlogs::lines(QString::number(unit), begin.addSecs(unit), marksOf(unit)));
    while (state.KeepRunning()) {
        const QTemporaryDir folder;
        Database database(folder.filePath("a"), Database::Access::Write);
        schema::migrate(database);
        int added = 0;
        logimport::store(database, {"Line 1"}, logfiles::filesOf(logs.path()),
                         [&added](const logimport::Batch& batch) { added += batch.counts.added; });
        if (added != logCount)
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
        std::vector<LogFile> logs;
        for (int i = first; i < first + batch; ++i)
            logs.push_back(
                {{QString("0908-%1").arg(random() % 10 == 0 ? i / 20 * 20 : i, 8, 10),
                  begin.addSecs(qint64{yearSeconds} * i / attempts).toString(Qt::ISODate),
                  marksOf(i)}});
        const auto station = static_cast<int>(random() % 3);
        attemptstore::store(database, {QString("Line %1").arg(station), true}, logs);
    }
}

/// A file with so many attempts; made when it is first asked for, gone at the end.
QString databaseOf(int attempts)
{
    static const QTemporaryDir folder;
    QString path = folder.filePath(QString::number(attempts));
    if (!QFile::exists(path)) {
        Database database(path, Database::Access::Write);
        schema::migrate(database);
        fill(database, attempts);
    }
    return path;
}

/// The whole program; with its memory where no other program was run.
void report(benchmark::State& state, int attempts, bool withMemory)
{
    const QString database = databaseOf(attempts);
    while (state.KeepRunning())
        if (QProcess::execute(ZORVI_YIELD, {"report", "--database", database, "--output",
                                            database + ".html"}) != 0)
            state.SkipWithError("no report");
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    if (withMemory)
        state.counters["resident"] = 1024.0 * static_cast<double>(used.ru_maxrss);
}
} // namespace

void addYieldRows()
{
    addRow({"log read and stored", 0, mostSecondsPerLog}, importLogs);
    const auto measure = [](int attempts, bool withMemory) {
        return [=](auto& state) { report(state, attempts, withMemory); };
    };
    addSide({"report over 1,000,000 attempts", 0, 2}, "station", measure(million, false))
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(5);
    for (const int attempts : {million / 10, million})
        benchmark::RegisterBenchmark(
            ("growth, report over attempts/" + std::to_string(attempts)).c_str(),
            measure(attempts, true))
            ->UseRealTime()
            ->Iterations(1);
}
