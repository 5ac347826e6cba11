// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/mainwindow.h"
#include "panels/componentpanel.h"
#include "simulator/simulatedunit.h"

#include <QDir>
#include <QMessageBox>
#include <QtTest>

#include <functional>

/// What makes a control pass, in as few messages as it has bands. The MIDI numbers are not those of
/// unit/ but written out once more, as the unit's firmware sends them: a wrong one there is found.
QVector<MidiMessage> passingMessages(int componentNum);

/// The bytes of a log, put together without the station's code: see docs/log-format.md.
/// isCovered: whether a component's band is to be marked.
QByteArray expectedLog(const QByteArray& serial, const QByteArray& date,
                       const std::function<bool(int component, int band)>& isCovered);

/// The bands that are covered, where the labels show the same; otherwise {-1}.
QVector<int> coveredBands(const ComponentPanel& panel);

/// The armed component as the window announces it, and whether every panel is as it may be then.
struct StateWatch : QObject {
    explicit StateWatch(MainWindow& window);
    /// The first panel that is in a wrong state, if there is one. While a run goes in its order,
    /// components before the armed one are done and the later ones untested.
    QString problem() const;

    const QList<ComponentPanel*> panels;
    int armed = 0;
};

/// What a test does to a station, and what it sees of it, as an operator would.
namespace station
{
QString deviceLabel(const MainWindow& window);
/// Types the serial number and clicks "Save Log".
void saveLog(const MainWindow& window, const QString& serial);
void click(const MainWindow& window, const QString& button);
/// Plays a unit's messages to the window, on this thread.
void receive(MainWindow& window, const QVector<MidiMessage>& messages);
constexpr auto allEntries = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
/// What is in a file; "(no file)" if it cannot be read.
QByteArray contentOf(const QString& path);
/// A program that was started with some arguments.
struct Program : QProcess {
    Program(const QString& program, const QString& arguments);
    /// Waits for its end. Returns its exit status, -1 if it crashed or did not end.
    int status();
};

QMessageBox* openNotice();

/// Closes each notice that opens while it lives, and keeps the texts.
struct NoticeCloser : QTimer {
    NoticeCloser();
    QStringList texts;
};

/// Keeps what the panels receive, on their thread: the bytes of each message.
struct ReceivedMessages : QObject {
    explicit ReceivedMessages(const MainWindow& window);
    QVector<QByteArray> messages;
};

QByteArray bytesOf(const MidiMessage& message);
/// Whether a message that the unit sends now arrives at the panels.
bool receives(const MainWindow& window, SimulatedUnit& unit);

/// Silences the debug lines, of which there are thousands in some tests.
void quiet();
} // namespace station
