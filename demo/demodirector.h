// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "simulator/simulatedunit.h"
#include "simulator/unitoptions.h"
#include "simulator/unitplayer.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class MainWindow;
class QMessageBox;

struct DemoOptions {
    UnitOptions unit;
    bool once;            ///< As fast as possible; ends after one run.
    bool isTarvekStation; ///< Tests component 18.
    QString serial;
    QString pictureFolder; ///< An existing folder for screenshots; empty for none.
};

/// Plays the operator and the unit at a station: plugs in, types the serial number, works every
/// control when the station arms it, skips what does not pass, closes the notice, checks the log.
/// Prints what it does on the terminal.
class DemoDirector : public QObject
{
    Q_OBJECT

public:
    DemoDirector(MainWindow& station, const DemoOptions& options);

    void start();

    /// Whether the log of a run was checked, or an error ended the demo.
    bool isOver() const { return stage == Stage::Over; }

Q_SIGNALS:
    /// The run is over: 0, or 1 after an error, which was printed on stderr.
    void signal_Finished(int exitStatus);

private Q_SLOTS:
    void slot_Watch();
    void slot_Armed(int componentNum);
    void slot_Verdict(int componentNum, int result);
    void slot_BandCovered();
    void slot_Work();
    void slot_Worked();
    void slot_SkipIfNotPassed();
    void slot_CloseNotice();
    void slot_CheckLog();

private:
    enum class Stage { WaitingForUnit, Running, Notice, Over };

    void begin();
    void fail(const QString& reason);
    void savePicture(const QString& name, QMessageBox* notice = nullptr);
    QString logPath() const;
    /// True also where there is no outbox.
    bool isInOutbox(const QByteArray& log) const;

    MainWindow& station;
    const DemoOptions options;
    SimulatedUnit unit;
    UnitPlayer player{unit};
    QTimer watchTimer;
    QTimer workTimer; ///< The operator's way to the next control.
    QTimer skipTimer; ///< Before a control that was worked and did not pass is skipped.
    QElapsedTimer sinceProgress;
    Stage stage = Stage::WaitingForUnit;
    int armed = -1;
    int worked = -1;
    bool middleTaken = false;
};
