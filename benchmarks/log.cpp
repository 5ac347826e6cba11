// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"
#include "benchmarks/row.h"
#include "simulator/unitscript.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

namespace
{
enum class Folder { Empty, OtherLogs, Outbox };

/// Lets the station write its logs into a folder of this kind.
void useFolder(Folder kind)
{
    const QString application = QCoreApplication::applicationDirPath();
    static const QTemporaryDir folders(application + "/folders-XXXXXX");
    const QString folder = folders.filePath(QString::number(static_cast<int>(kind)));
    if (!QFile::exists(folder)) {
        QDir().mkpath(kind == Folder::Outbox ? folder + "/Outbox" : folder);
        for (int i = 0; kind == Folder::OtherLogs && i < 10000; ++i)
            QFile(QString("%1/ZORVI_%2.txt").arg(folder).arg(i)).open(QIODevice::WriteOnly);
    }
    QFile::remove(application + "/Logs");
    QFile::link(folder, application + "/Logs");
}

/// A log over the one before it, as when a unit is tested again. Only a run with a band in it goes
/// to the outbox.
void writeLog(benchmark::State& state, MainWindow& station, Folder kind)
{
    useFolder(kind);
    const MidiMessage movesFader = unitscript::good(roster::firstFader).front().message;
    station.handleIncomingMidiMessage(nullptr, movesFader);
    QCoreApplication::processEvents();
    station.slot_OutputLog(); // the first one in this folder
    while (state.KeepRunning())
        station.slot_OutputLog();
    station.slot_Init();
}

void saveFile(const QString& path)
{
    constexpr int logSize = 6000;
    QSaveFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(QByteArray(logSize, '1'));
    file.commit();
}

/// As many bytes, ready made, to the same places, and on the disk at the same moments.
void saveBytes(benchmark::State& state, Folder kind)
{
    useFolder(kind);
    const QString logs = QCoreApplication::applicationDirPath() + "/Logs/";
    const int outboxFd = open(qPrintable(logs + "Outbox"), O_RDONLY);
    int saveNumber = 0;
    while (state.KeepRunning()) {
        if (kind == Folder::Outbox) {
            saveFile(logs + "Outbox/" + QString::number(++saveNumber));
            fsync(outboxFd);
        }
        saveFile(logs + "ZORVI_.txt");
    }
    close(outboxFd);
}
} // namespace

void addLogRows(MainWindow& station)
{
    using std::placeholders::_1;
    const auto write = [&](Folder kind) {
        return std::bind(writeLog, _1, std::ref(station), kind);
    };
    const auto save = [](Folder kind) { return std::bind(saveBytes, _1, kind); };
    addRow("log built and written", "1.5", write(Folder::Empty), save(Folder::Empty));
    addRow("log built and written, with outbox", "1.5", write(Folder::Outbox),
           save(Folder::Outbox));
    addRow("log beside 10,000 others, to none", "1.3", write(Folder::OtherLogs),
           write(Folder::Empty));
}
