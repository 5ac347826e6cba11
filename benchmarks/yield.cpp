// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "benchmarks/row.h"
#include "yield/commands/reportfile.h"
#include "yield/intake/logimport.h"
#include "yield/store/database.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <map>
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
    while (state.KeepRunning()) {
        const QTemporaryDir folder;
        if (logimport::run({folder.filePath("a"), {"Line 1", false}, {logs.path()}}, stream,
                           stream) != 0)
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

/// The whole program. Of growing numbers also with the most memory that it used: there it is the
/// only program that was run.
void report(benchmark::State& state, int attempts, bool withMemory)
{
    const QString database = databaseOf(attempts);
    while (state.KeepRunning())
        if (QProcess::execute(ZORVI_YIELD, {"report", "--database", database, "--output",
                                            database + ".html"}) != 0)
            state.SkipWithError("no report");
    if (!withMemory)
        return;
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
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
