// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "benchmarks/row.h"
#include "yield/intake/logimport.h"
#include "yield/logs/attemptrules.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace
{
/// So many batches that the first, which is read while nothing is stored yet, weighs little.
constexpr int logCount = 10 * logimport::batchSize;

/// Logs of as many units, one in twenty with a band missed, and a database that waits for them.
class Line
{
public:
    Line()
    {
        QDir(folder.path()).mkpath(QStringLiteral("Logs"));
        for (int unit = 0; unit < logCount; ++unit)
            writeLog(unit);
        Database(emptyDatabase(), Database::Access::Write);
    }

    QString logs() const { return folder.filePath(QStringLiteral("Logs")); }

    /// An empty database in the place of the one that is there.
    QString freshDatabase() const
    {
        QString path = folder.filePath(QStringLiteral("attempts.sqlite"));
        QFile::remove(path);
        QFile::copy(emptyDatabase(), path);
        return path;
    }

private:
    QString emptyDatabase() const { return folder.filePath(QStringLiteral("empty.sqlite")); }

    void writeLog(int unit) const
    {
        testlog::Coverage coverage;
        for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
            for (int band = 0; band < bandmarks::bandCount(c); ++band) {
                const bool isMissed =
                    c == roster::channelButton || (unit % 20 == 0 && c == 3 && band == unit % 13);
                coverage.at(static_cast<std::size_t>(c)).append({0, 0, isMissed ? 0.0F : 1.0F});
            }
        QFile file(logs() + QStringLiteral("/ZORVI_%1.txt").arg(unit));
        const QDateTime when(QDate(2026, 11, 21), QTime(6, 0));
        if (file.open(QIODevice::WriteOnly))
            file.write(testlog::lines(QString::number(unit), when.addSecs(unit), coverage)
                           .join('\n')
                           .toUtf8() +
                       '\n');
    }

    const QTemporaryDir folder;
};

void importLogs(benchmark::State& state, const Line& line)
{
    QString text;
    QTextStream stream(&text);
    while (state.KeepRunning()) {
        state.PauseTiming();
        const QString database = line.freshDatabase();
        state.ResumeTiming();
        if (logimport::run({database, {QStringLiteral("Line 1"), false}, {line.logs()}}, stream,
                           stream) != 0)
            return state.SkipWithError("the logs were not imported");
    }
    setPerIteration(state, logCount);
}

/// The rows that the logs lead to, ready to be inserted.
struct ReadyRow {
    QByteArray serial;
    QByteArray testedAt;
    QByteArray marks;
    std::vector<bandmarks::Band> missed;
};

std::vector<ReadyRow> readyRows(const Line& line)
{
    std::vector<ReadyRow> rows;
    QString reason;
    for (const QString& path : logfiles::filesOf(line.logs()))
        if (const auto log = logfiles::read(path, reason))
            rows.push_back({log->serial.toUtf8(), log->testedAt.toUtf8(),
                            bandmarks::packed(log->marks),
                            attemptrules::outcomeOf(log->marks, false).missed});
    return rows;
}

void bind(sqlite3_stmt* statement, int column, const QByteArray& text)
{
    sqlite3_bind_text(statement, column, text.constData(), text.size(), SQLITE_STATIC);
}

/// The same rows in the same transactions through SQLite's own functions.
bool insertRows(sqlite3* database, const std::vector<ReadyRow>& rows)
{
    const auto run = [&](const char* statement) {
        return sqlite3_exec(database, statement, nullptr, nullptr, nullptr) == SQLITE_OK;
    };
    sqlite3_stmt* attempt = nullptr;
    sqlite3_stmt* missedBand = nullptr;
    sqlite3_prepare_v2(database,
                       "INSERT INTO attempts (station_id, serial, tested_at, marks, complete) "
                       "VALUES (1, ?, ?, ?, ?)",
                       -1, &attempt, nullptr);
    sqlite3_prepare_v2(database, "INSERT INTO missed_bands VALUES (?, ?, ?)", -1, &missedBand,
                       nullptr);
    bool done =
        run("PRAGMA foreign_keys = ON") && run("INSERT INTO stations (name) VALUES ('Line 1')");
    int inTransaction = 0;
    for (const ReadyRow& row : rows) {
        if (inTransaction == 0)
            done = done && run("BEGIN IMMEDIATE");
        bind(attempt, 1, row.serial);
        bind(attempt, 2, row.testedAt);
        sqlite3_bind_blob(attempt, 3, row.marks.constData(), row.marks.size(), SQLITE_STATIC);
        sqlite3_bind_int(attempt, 4, row.missed.empty() ? 1 : 0);
        done = done && sqlite3_step(attempt) == SQLITE_DONE;
        sqlite3_reset(attempt);
        const auto id = sqlite3_last_insert_rowid(database);
        for (const auto& band : row.missed) {
            sqlite3_bind_int64(missedBand, 1, id);
            sqlite3_bind_int(missedBand, 2, band.componentNum);
            sqlite3_bind_int(missedBand, 3, band.band);
            done = done && sqlite3_step(missedBand) == SQLITE_DONE;
            sqlite3_reset(missedBand);
        }
        if (++inTransaction == logimport::batchSize) {
            done = done && run("COMMIT");
            inTransaction = 0;
        }
    }
    sqlite3_finalize(attempt);
    sqlite3_finalize(missedBand);
    return done;
}

void insertReadyRows(benchmark::State& state, const Line& line)
{
    const auto rows = readyRows(line);
    while (state.KeepRunning()) {
        state.PauseTiming();
        const QByteArray path = QFile::encodeName(line.freshDatabase());
        state.ResumeTiming();
        sqlite3* database = nullptr;
        const bool done =
            sqlite3_open(path.constData(), &database) == SQLITE_OK && insertRows(database, rows);
        sqlite3_close(database);
        if (!done || rows.size() != logCount)
            return state.SkipWithError("the rows were not inserted");
    }
    setPerIteration(state, logCount);
}
} // namespace

void addYieldImportRows()
{
    const auto line = std::make_shared<const Line>();
    addRow(
        {"log read and stored", 2}, [line](auto& state) { importLogs(state, *line); },
        [line](auto& state) { insertReadyRows(state, *line); });
}
