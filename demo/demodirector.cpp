// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/demodirector.h"

#include "app/mainwindow.h"
#include "app/testlog.h"
#include "demo/panelrun.h"
#include "panels/componentpanel.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QTextStream>
#include <QToolButton>

#include <algorithm>

namespace
{
constexpr int watchIntervalMs = 50;
/// Longer than the station's poll interval and than the end of a run.
constexpr int standstillMs = 15000;
/// How long a message of a control may take to its panel on a busy machine.
constexpr int patienceMs = 2000;

constexpr int handMs = 300;
constexpr int readingMs = 3000;
constexpr int readingFastMs = 300;

void print(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

QMessageBox* openNotice()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

int coveredBands(const ComponentPanel& panel)
{
    const auto& bands = panel.coverage();
    return static_cast<int>(
        std::count_if(bands.cbegin(), bands.cend(),
                      [](const ComponentRange& band) { return band.covered != 0.0F; }));
}
} // namespace

DemoDirector::DemoDirector(MainWindow& testStation, const DemoOptions& demoOptions)
    : station(testStation)
    , options(demoOptions)
{
    player.setPace(options.unit.pace);
    workTimer.setSingleShot(true);
    workTimer.setInterval(options.once ? 0 : handMs);
    skipTimer.setSingleShot(true);
    skipTimer.setInterval(patienceMs);

    connect(&watchTimer, SIGNAL(timeout()), this, SLOT(slot_Watch()));
    connect(&workTimer, SIGNAL(timeout()), this, SLOT(slot_Work()));
    connect(&skipTimer, SIGNAL(timeout()), this, SLOT(slot_SkipIfNotPassed()));
    connect(&player, SIGNAL(signal_Finished()), this, SLOT(slot_Worked()));
    connect(&station, SIGNAL(signal_QueueComponent(int)), this, SLOT(slot_Armed(int)));
    for (const auto* panel : station.findChildren<ComponentPanel*>()) {
        connect(panel, SIGNAL(signal_Click()), this, SLOT(slot_BandCovered()));
        connect(panel, SIGNAL(signal_ComponentResult(int, int)), this,
                SLOT(slot_Verdict(int, int)));
    }
}

void DemoDirector::start()
{
    // An old log would hide that the new one was not written.
    QFile::remove(logPath());
    savePicture(QStringLiteral("start.png"));
    if (stage == Stage::Over)
        return;
    if (!unit.plug()) {
        fail(QStringLiteral("the unit's MIDI port cannot be made"));
        return;
    }
    print(QStringLiteral("The unit is plugged in."));
    sinceProgress.start();
    watchTimer.start(watchIntervalMs);
}

void DemoDirector::slot_Watch()
{
    const auto* label = station.findChild<QLabel*>(QStringLiteral("deviceLabel"));
    if (stage == Stage::WaitingForUnit && label->text() == QLatin1String("Device: CONNECTED"))
        begin();

    if (stage == Stage::Running && openNotice() != nullptr) {
        stage = Stage::Notice;
        print(QStringLiteral("The station shows: %1").arg(openNotice()->text()));
        // Queued: after the notice has closed, also when the user closed it.
        connect(openNotice(), SIGNAL(finished(int)), this, SLOT(slot_CheckLog()),
                Qt::QueuedConnection);
        QTimer::singleShot(options.once ? readingFastMs : readingMs, this,
                           SLOT(slot_CloseNotice()));
    }

    if (player.isPlaying())
        sinceProgress.start();
    if (sinceProgress.elapsed() > standstillMs)
        fail(stage == Stage::WaitingForUnit
                 ? QStringLiteral("the station does not find the unit")
                 : QStringLiteral("the run does not go on from component %1").arg(armed));
}

void DemoDirector::begin()
{
    print(QStringLiteral("The station has found it; the serial number is %1.").arg(options.serial));
    station.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(options.serial);
    stage = Stage::Running;
    station.findChild<QToolButton*>(QStringLiteral("startTest"))->click();
}

void DemoDirector::slot_Armed(int componentNum)
{
    sinceProgress.start();
    // A skipped last component is armed once more before the notice opens.
    if (stage != Stage::Running || componentNum == worked)
        return;
    armed = componentNum;
    skipTimer.stop();
    if (!player.isPlaying())
        workTimer.start();
}

void DemoDirector::slot_Work()
{
    worked = armed;
    player.play(unitfault::scriptFor(armed, options.unit.unit));
}

void DemoDirector::slot_Worked()
{
    if (armed != worked)
        workTimer.start();
    else
        skipTimer.start();
}

void DemoDirector::slot_SkipIfNotPassed()
{
    for (const auto* panel : station.findChildren<ComponentPanel*>())
        if (panel->getComponentNum() == armed && coveredBands(*panel) == panel->coverage().size())
            return; // the last component of the run passed; no other is armed after it
    print(
        QStringLiteral("Component %1 was worked and did not pass: \"Skip Sensor >>\".").arg(armed));
    station.findChild<QToolButton*>(QStringLiteral("skipSensorButton"))->click();
}

void DemoDirector::slot_Verdict(int componentNum, int result)
{
    if (result == componentresult::passed)
        print(QStringLiteral("Component %1 passed.").arg(componentNum));
    else if (componentNum == roster::channelButton && !options.isTarvekStation)
        print(QStringLiteral("Component %1 is not tested at this station.").arg(componentNum));
    else
        print(QStringLiteral("Component %1 skipped.").arg(componentNum));
}

void DemoDirector::slot_BandCovered()
{
    // Some panels have passed by now and some are untested.
    constexpr int fewPassed = 3;
    constexpr int halfway = 7;
    if (skipTimer.isActive())
        skipTimer.start(); // messages still come to the panels
    const auto* panel = qobject_cast<const ComponentPanel*>(sender());
    if (middleTaken || panel->getComponentNum() < fewPassed || coveredBands(*panel) != halfway)
        return;
    middleTaken = true;
    savePicture(QStringLiteral("middle.png"));
}

void DemoDirector::slot_CloseNotice()
{
    QMessageBox* notice = openNotice();
    if (notice == nullptr)
        return; // already closed by the user
    savePicture(QStringLiteral("end.png"), notice);
    notice->button(QMessageBox::Ok)->click();
}

void DemoDirector::slot_CheckLog()
{
    QFile file(logPath());
    if (!file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("there is no log at %1").arg(logPath()));
        return;
    }
    print(QStringLiteral("Log: %1").arg(logPath()));
    const QByteArray log = file.readAll();
    const QString differences =
        PanelRun().differences(log, options.unit.unit, options.isTarvekStation);
    if (!differences.isEmpty()) {
        fail(QStringLiteral("the log is not as expected: %1").arg(differences));
        return;
    }
    print(options.unit.unit.fault == Fault::None
              ? QStringLiteral("Every tested band is covered.")
              : QStringLiteral("Covered is exactly what a unit with this fault can cover."));
    if (!isInOutbox(log)) {
        fail(QStringLiteral("the log is not in the outbox"));
        return;
    }
    stage = Stage::Over;
    watchTimer.stop();
    Q_EMIT signal_Finished(0);
}

bool DemoDirector::isInOutbox(const QByteArray& log) const
{
    const QDir outbox(QFileInfo(logPath()).path() + QStringLiteral("/Outbox"));
    if (!outbox.exists())
        return true; // none is wanted
    for (const QFileInfo& entry : outbox.entryInfoList(QDir::Files, QDir::Time)) {
        QFile file(entry.filePath());
        if (file.open(QIODevice::ReadOnly) && file.readAll() == log) {
            print(QStringLiteral("Outbox: %1").arg(entry.filePath()));
            return true;
        }
    }
    return false;
}

void DemoDirector::fail(const QString& reason)
{
    QTextStream(stderr) << "The demo failed: " << reason << "." << Qt::endl;
    stage = Stage::Over;
    watchTimer.stop();
    player.stop();
    Q_EMIT signal_Finished(1);
}

void DemoDirector::savePicture(const QString& name, QMessageBox* notice)
{
    if (options.pictureFolder.isEmpty())
        return;
    QPixmap picture = station.grab();
    if (notice != nullptr) {
        QPainter painter(&picture);
        painter.drawPixmap(station.mapFromGlobal(notice->mapToGlobal(QPoint())), notice->grab());
    }
    const QString path = options.pictureFolder + QLatin1Char('/') + name;
    if (picture.save(path))
        print(QStringLiteral("Picture: %1").arg(path));
    else
        fail(QStringLiteral("%1 cannot be written").arg(path));
}

QString DemoDirector::logPath() const
{
    return testlog::path(QCoreApplication::applicationDirPath(), options.serial);
}
