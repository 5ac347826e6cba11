// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "app/testlog.h"
#include "benchmarks/row.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

namespace
{
QString pathOfLog()
{
    return testlog::path(QCoreApplication::applicationDirPath(), {});
}

/// A log over the one before it, as when a unit is tested again.
void writeLog(benchmark::State& state, MainWindow& station)
{
    while (state.KeepRunning())
        station.slot_OutputLog();
}

/// The same bytes, ready made, to the same place through a bare QSaveFile.
void saveBytes(benchmark::State& state, MainWindow& station)
{
    station.slot_OutputLog();
    QFile log(pathOfLog());
    if (!log.open(QIODevice::ReadOnly))
        return state.SkipWithError("no log was written");
    const QByteArray bytes = log.readAll();
    while (state.KeepRunning()) {
        QSaveFile file(pathOfLog());
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
        file.commit();
    }
}
} // namespace

void addLogRows(MainWindow& station)
{
    addRow(
        {"log built and written", 1.5}, [&](auto& state) { writeLog(state, station); },
        [&](auto& state) { saveBytes(state, station); });
}
