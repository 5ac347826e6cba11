// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "benchmarks/row.h"
#include "yield/commands/reportfile.h"
#include "yield/logs/bandmarks.h"
#include "yield/store/database.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace
{
constexpr int million = 1000000;
constexpr int tenth = million / 10;

/// A year of three stations: one attempt in twenty misses a control, four of five of those units
/// come again.
void fill(QSqlDatabase& database, int attempts)
{
    constexpr int yearSeconds = 365 * 24 * 3600;
    const QByteArray marks = bandmarks::packed(~BandMarks());
    const QDateTime begin(QDate(2026, 1, 1), QTime(6, 0));
    std::mt19937 random{908};
    std::vector<int> repaired;
    database.transaction();
    QSqlQuery query(database);
    query.exec(QStringLiteral("INSERT INTO stations (id, name, tests_18) VALUES (1, 'one', 0), "
                              "(2, 'two', 0), (3, 'three', 1)"));
    query.prepare(QStringLiteral("INSERT INTO attempts (id, station_id, serial, tested_at, marks, "
                                 "complete) VALUES (?, ?, ?, ?, ?, ?)"));
    QSqlQuery missed(database);
    missed.prepare(QStringLiteral("INSERT INTO missed_bands VALUES (?, ?, ?)"));
    for (int i = 1; i <= attempts; ++i) {
        int unit = i;
        if (!repaired.empty() && random() % 10 == 0) {
            unit = repaired.back();
            repaired.pop_back();
        }
        const bool isComplete = random() % 20 != 0;
        if (!isComplete && random() % 5 != 0)
            repaired.push_back(unit);
        query.bindValue(0, i);
        query.bindValue(1, static_cast<int>(random() % 3) + 1);
        query.bindValue(2, QStringLiteral("0908-%1").arg(unit, 8, 10, QLatin1Char('0')));
        query.bindValue(3, begin.addSecs(qint64{yearSeconds} * i / attempts).toString(Qt::ISODate));
        query.bindValue(4, marks);
        query.bindValue(5, isComplete ? 1 : 0);
        query.exec();
        const int componentNum = static_cast<int>(random() % roster::channelButton);
        const bool isAllMissed = random() % 4 == 0;
        for (int band = 0; !isComplete && band < bandmarks::bandCount(componentNum); ++band) {
            if (!isAllMissed && band + 1 < bandmarks::bandCount(componentNum))
                continue;
            missed.bindValue(0, i);
            missed.bindValue(1, componentNum);
            missed.bindValue(2, band);
            missed.exec();
        }
    }
    database.commit();
}

/// A file with so many attempts; made when it is first asked for, gone at the end.
QString databaseOf(int attempts)
{
    static const QTemporaryDir folder;
    static std::map<int, QString> paths;
    QString& path = paths[attempts];
    if (path.isEmpty()) {
        path = folder.filePath(QStringLiteral("%1.sqlite").arg(attempts));
        Database database(path, Database::Access::Write);
        fill(database.connection(), attempts);
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

/// The least that any report has to do: to look at each attempt once by day, and once by unit.
void goThroughAttempts(benchmark::State& state)
{
    Database database(databaseOf(million), Database::Access::Read);
    while (state.KeepRunning())
        for (const char* const statement :
             {"SELECT count(*) FROM (SELECT sum(complete) FROM attempts GROUP BY substr(tested_at, "
              "1, 10), station_id)",
              "SELECT count(*) FROM (SELECT serial FROM attempts GROUP BY serial HAVING count(*) > "
              "1)"}) {
            QSqlQuery query(database.connection());
            if (!query.exec(QLatin1String(statement)) || !query.next())
                state.SkipWithError("the attempts cannot be read");
        }
}

/// The most memory that the program was seen with while it made a report.
void rememberReport(benchmark::State& state, int attempts)
{
    constexpr int pollMs = 1;
    const QString database = databaseOf(attempts);
    double most = 0;
    while (state.KeepRunning()) {
        QElapsedTimer timer;
        timer.start();
        QProcess program;
        program.start(ZORVI_YIELD, {"report", "--database", database, "--output",
                                    database + QStringLiteral(".html")});
        while (!program.waitForFinished(pollMs) && program.state() != QProcess::NotRunning)
            most = std::max(most, residentBytesOf(QByteArray::number(program.processId())));
        if (program.exitCode() != 0)
            state.SkipWithError("no report");
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    state.counters["resident"] = most;
}
} // namespace

void addYieldReportRows()
{
    const Row row{"report over 1,000,000 attempts", 0, 2};
    for (auto* side :
         {addSide(row, "station", makeReport), addSide(row, "floor", goThroughAttempts)})
        side->UseRealTime()->Iterations(1)->Repetitions(5);
    for (const int attempts : {tenth, million}) {
        const std::string name = "growth, report over attempts/" + std::to_string(attempts);
        const char* const text = name.data();
        benchmark::RegisterBenchmark(text,
                                     [attempts](auto& state) { rememberReport(state, attempts); })
            ->UseManualTime()
            ->Iterations(1);
    }
}
