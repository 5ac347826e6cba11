// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"

#include "app/juceversions.h"
#include "app/runorder.h"
#include "app/serialentry.h"
#include "app/testlog.h"
#include "app/unitidentity.h"
#include "app/unitlink.h"
#include "audio/soundserver.h"
#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"
#include "ui_mainwindow.h"
#include "unit/panelplacement.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QMessageBox>
#include <QThread>

#include <algorithm>

namespace
{
constexpr int pollIntervalMs = 1000;
constexpr int noticeDelayMs = 500;

/// From the poll that finds the unit's port to the poll that finds it gone, also if the port could
/// not be opened. One for the process, which has one window at a time.
bool deviceConnected = false;

QThread* startedThread()
{
    auto* thread = new QThread;
    thread->start(QThread::InheritPriority);
    return thread;
}
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , form(std::make_unique<Ui::MainWindow>())
    , outbox(testlog::folder(QCoreApplication::applicationDirPath()))
    , unitLink(std::make_unique<UnitLink>(*deviceManager))
{
    tarvekStation =
        QCoreApplication::applicationName().contains(QLatin1String("TARVEK"), Qt::CaseSensitive)
            ? 1
            : 0;
    qRegisterMetaType<MidiMessage>("MidiMessage");

    form->setupUi(this);
    form->audioOnOff->setChecked(true);
    connectForm();

    parserThread = startedThread();
    createSound();
    createParser();
    processorThread = startedThread();
    createProcessor();

    createPanels();
    slot_Init();

    // After the run is armed. The result is ignored: the station works without sound.
    if (soundserver::isRunning())
        deviceManager->initialise(2, 2, nullptr, true, {}, juceversions::preferredSetup());
    connect(&pollTimer, SIGNAL(timeout()), this, SLOT(slot_PollDevices()));
    pollTimer.start(pollIntervalMs);
}

MainWindow::~MainWindow()
{
    // First what calls the window from other threads: the MIDI input, then the sound.
    closeUnitInput();
    deviceConnected = false; // for the next window of this process
    const bool canClose =
        deviceManager->getCurrentAudioDevice() == nullptr || audioEngine->waitForBlock();
    audioSourcePlayer.setSource(nullptr);
    deviceManager->removeAudioCallback(&audioSourcePlayer);
    // A sound server that has stopped blocks whoever closes a device: the process's end closes it.
    if (!canClose)
        static_cast<void>(deviceManager.release());
    // The processor uses the monitor, a member of the window. The parser does not, and its thread
    // runs until the process ends.
    processorThread->quit();
    processorThread->wait();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // On purpose only this thread: it ticks, the parser's thread has nothing to do.
    processorThread->quit();
    QMainWindow::closeEvent(event);
}

void MainWindow::connectForm()
{
    connect(form->log, SIGNAL(clicked(bool)), this, SLOT(slot_OutputLog()));
    connect(form->startTest, SIGNAL(clicked(bool)), this, SLOT(slot_Init()));
    // Ready for the next serial number, which replaces the text.
    connect(form->startTest, SIGNAL(clicked(bool)), form->serialNumber, SLOT(setFocus()));
    connect(form->startTest, SIGNAL(clicked(bool)), form->serialNumber, SLOT(selectAll()));
    connect(form->skipSensorButton, SIGNAL(clicked(bool)), this,
            SLOT(slot_SkipCurrentSensorPressed()));
    form->serialNumber->setFocus();
}

void MainWindow::createSound()
{
    audioEngine = std::make_unique<AudioEngine>();
    audioSourcePlayer.setSource(audioEngine.get());
    deviceManager->addAudioCallback(&audioSourcePlayer);

    connect(this, SIGNAL(signal_Beep()), audioEngine.get(), SLOT(slot_Beep()));
    connect(this, SIGNAL(signal_Click()), audioEngine.get(), SLOT(slot_Click()));
    connect(this, SIGNAL(signal_Ding()), audioEngine.get(), SLOT(slot_Ding()));
    connect(form->audioOnOff, SIGNAL(clicked(bool)), audioEngine.get(),
            SLOT(slot_SetAudioOnOff(bool)));
}

void MainWindow::createParser()
{
    parser = new Quillon_Zorvi_0908_AssemblyTester_Parser(&monitor, nullptr);
    parser->moveToThread(parserThread);
}

void MainWindow::createProcessor()
{
    processor = new Quillon_Zorvi_0908_AssemblyTester_Processor(&monitor, nullptr);
    processor->moveToThread(processorThread);
}

void MainWindow::createPanels()
{
    for (std::size_t i = 0; i < faderPanels.size(); ++i)
        faderPanels[i] = addPanel<Zorvi_0908_Fader>(roster::firstFader + static_cast<int>(i));
    for (std::size_t i = 0; i < rotaryPanels.size(); ++i)
        rotaryPanels[i] = addPanel<Zorvi_0908_Rotary>(roster::firstRotary + static_cast<int>(i));
    for (std::size_t i = 0; i < buttonPanels.size(); ++i)
        buttonPanels[i] = addPanel<Zorvi_0908_Button>(roster::firstButton + static_cast<int>(i));
}

template <typename Panel>
Panel* MainWindow::addPanel(int componentNum)
{
    constexpr int tag = -1;
    auto* panel = new Panel(this, tag, componentNum);
    if (const auto position = panelPosition(componentNum))
        panel->move(*position);
    const bool isTestedElsewhere = componentNum == roster::channelButton && tarvekStation == 0;
    panel->setVisible(componentNum != roster::powerButton && !isTestedElsewhere);

    connect(this, SIGNAL(signal_DistributeMIDI(MidiMessage)), panel,
            SLOT(slot_ReceiveMIDI(MidiMessage)));
    connect(panel, SIGNAL(signal_ComponentResult(int, int)), this,
            SLOT(slot_ProcessComponentResult(int, int)));
    connect(this, SIGNAL(signal_QueueComponent(int)), panel, SLOT(slot_QueueComponent(int)));
    connect(this, SIGNAL(signal_SkipComponent(int)), panel, SLOT(slot_Skip(int)));
    connect(this, SIGNAL(signal_Init()), panel, SLOT(slot_Init()));
    connect(panel, SIGNAL(signal_Click()), audioEngine.get(), SLOT(slot_Click()));
    connect(panel, SIGNAL(signal_Beep()), audioEngine.get(), SLOT(slot_Beep()));
    return panel;
}

void MainWindow::slot_PollDevices()
{
    const auto units = unitLink->listUnits();
    if (!units.isEmpty() && !deviceConnected)
        connectUnit();
    else if (deviceConnected && unitLink->listUnits().isEmpty())
        disconnectUnit();
    else if (midiInput != nullptr && !unitLink->isSubscribedTo(units))
        reopenUnitInput();
}

void MainWindow::connectUnit()
{
    deviceConnected = true;
    form->deviceLabel->setText(tr("Device: CONNECTED"));
    openUnitInput();

    const auto outputs = unitidentity::unitsIn(juce::MidiOutput::getAvailableDevices());
    if (!outputs.isEmpty()) {
        // On purpose the output is closed at once and the request is not sent: the station only
        // listens.
        juce::MidiOutput::openDevice(outputs[0]);
        unitidentity::identityRequest();
    }
}

void MainWindow::disconnectUnit()
{
    deviceConnected = false;
    form->deviceLabel->setText(tr("Device: NOT CONNECTED"));
    closeUnitInput();
}

void MainWindow::openUnitInput()
{
    midiInput = unitLink->openInput(this).release();
    if (midiInput != nullptr)
        midiInput->start();
}

void MainWindow::reopenUnitInput()
{
    closeUnitInput(); // first: JUCE 9 has one port for all inputs of a device
    openUnitInput();
    if (midiInput == nullptr)
        disconnectUnit(); // the unit is gone again: the next poll that finds it connects
}

void MainWindow::closeUnitInput()
{
    if (midiInput == nullptr)
        return;
    midiInput->stop();
    delete midiInput;
    midiInput = nullptr;
}

void MainWindow::handleIncomingMidiMessage(juce::MidiInput*, const juce::MidiMessage& message)
{
    if (message.isSysEx()) {
        if (unitidentity::isIdentityReply(message))
            qDebug() << "sysex inquiry reply";
        return;
    }
    if (message.isNoteOnOrOff() || message.isController())
        Q_EMIT signal_DistributeMIDI(message);
}

void MainWindow::slot_Init()
{
    Q_EMIT signal_Init();
    outbox.startRun();
    currentComponent = roster::firstComponent;
    Q_EMIT signal_QueueComponent(currentComponent);
}

void MainWindow::slot_RestartTest()
{
    slot_Init();
}

void MainWindow::slot_SkipCurrentSensorPressed()
{
    Q_EMIT signal_SkipComponent(currentComponent);
}

void MainWindow::slot_ProcessComponentResult(int componentNum, int result)
{
    qDebug() << "Component num" << componentNum;
    if (result != componentresult::passed && result != componentresult::skipped)
        return;
    if (result == componentresult::passed)
        Q_EMIT signal_Ding();

    const RunStep step = stepAfterResult(componentNum, currentComponent, tarvekStation == 1);
    currentComponent = step.componentNum;
    switch (step.action) {
    case RunAction::Queue:
        Q_EMIT signal_QueueComponent(currentComponent);
        break;
    case RunAction::Skip:
        Q_EMIT signal_SkipComponent(currentComponent);
        break;
    case RunAction::Finish:
        finishRun();
        // On purpose only after a skip: a skipped control can still be worked until the notice
        // opens, a passed one has nothing left to judge.
        if (result == componentresult::skipped)
            Q_EMIT signal_QueueComponent(currentComponent);
        break;
    }
}

void MainWindow::finishRun()
{
    qDebug() << "TEST COMPLETE";
    slot_OutputLog();
    QTimer::singleShot(noticeDelayMs, this, SLOT(slot_TestComplete()));
}

void MainWindow::slot_TestComplete()
{
    QMessageBox notice;
    notice.setText(tr("Test Complete."));
    SerialEntry entry(notice, *form->serialNumber);
    const int closedBy = notice.exec();
    entry.finish();
    if (closedBy != 0)
        slot_Init();
}

std::array<const ComponentPanel*, roster::componentCount> MainWindow::panels() const
{
    std::array<const ComponentPanel*, roster::componentCount> all{};
    std::copy(faderPanels.begin(), faderPanels.end(), &all.at(roster::firstFader));
    std::copy(buttonPanels.begin(), buttonPanels.end(), &all.at(roster::firstButton));
    std::copy(rotaryPanels.begin(), rotaryPanels.end(), &all.at(roster::firstRotary));
    return all;
}

void MainWindow::slot_OutputLog()
{
    testlog::Coverage coverage;
    QDateTime firstBandAt;
    for (const ComponentPanel* panel : panels()) {
        coverage.at(static_cast<std::size_t>(panel->getComponentNum())) = panel->coverage();
        const QDateTime& time = panel->firstBandAt();
        if (!time.isNull() && (firstBandAt.isNull() || time < firstBandAt))
            firstBandAt = time;
    }
    const QString serial = form->serialNumber->text();
    logLines = testlog::lines(serial, QDateTime::currentDateTime(), coverage);
    // The outbox first: its log is never overwritten.
    outbox.add(logLines, firstBandAt, tarvekStation == 1);
    testlog::write(testlog::path(QCoreApplication::applicationDirPath(), serial), logLines);
}
