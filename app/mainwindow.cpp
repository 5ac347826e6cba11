// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/mainwindow.h"

#include "app/identity.h"
#include "app/midiinputthread.h"
#include "app/panelplacement.h"
#include "app/runorder.h"
#include "app/sequencerhold.h"
#include "app/testlog.h"
#include "app/unitport.h"
#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"
#include "sensor/quillon_zorvi_0908_assemblytester_parser.h"
#include "sensor/quillon_zorvi_0908_assemblytester_processor.h"
#include "ui_mainwindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QMessageBox>
#include <QThread>

namespace
{
constexpr int pollIntervalMs = 1000;
constexpr int noticeDelayMs = 500;
constexpr int panelTag = -1;

/// Whether the unit's port was there at the last poll; the process has one link to a unit.
bool deviceConnected = false;

bool isUnitPresent()
{
    return unitport::identifierIn(juce::MidiInput::getAvailableDevices()).isNotEmpty();
}

QThread* startedThread()
{
    auto* thread = new QThread;
    thread->start(QThread::InheritPriority);
    return thread;
}

int componentAt(int first, std::size_t index)
{
    return first + static_cast<int>(index);
}
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , form(std::make_unique<Ui::MainWindow>())
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

    // Armed by now, and whatever comes of it: a station without sound tests all the same.
    deviceManager.initialise(2, 2, nullptr, true);
    connect(&pollTimer, SIGNAL(timeout()), this, SLOT(slot_PollDevices()));
    pollTimer.start(pollIntervalMs);
}

MainWindow::~MainWindow()
{
    // First whatever calls into the window from another thread: the MIDI input, then the sound.
    closeUnitInput();
    deviceConnected = false; // for the next window of this process
    audioSourcePlayer.setSource(nullptr);
    deviceManager.removeAudioCallback(&audioSourcePlayer);
    // The processor ticks on the monitor, which goes with the window; the parser never touches it,
    // so its thread runs on until the process ends.
    processorThread->quit();
    processorThread->wait();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // The processor's thread alone, on purpose: it ticks; nothing ever comes to the parser's.
    processorThread->quit();
    QMainWindow::closeEvent(event);
}

void MainWindow::connectForm()
{
    connect(form->log, SIGNAL(clicked(bool)), this, SLOT(slot_OutputLog()));
    connect(form->startTest, SIGNAL(clicked(bool)), this, SLOT(slot_Init()));
    connect(form->skipSensorButton, SIGNAL(clicked(bool)), this,
            SLOT(slot_SkipCurrentSensorPressed()));
}

void MainWindow::createSound()
{
    audioEngine = std::make_unique<AudioEngine>();
    audioSourcePlayer.setSource(audioEngine.get());
    deviceManager.addAudioCallback(&audioSourcePlayer);

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
    for (std::size_t i = 0; i < faderPanels.size(); ++i) {
        faderPanels[i] = new Zorvi_0908_Fader(this, panelTag, componentAt(roster::firstFader, i));
        addPanel(faderPanels[i], true);
    }
    for (std::size_t i = 0; i < rotaryPanels.size(); ++i) {
        rotaryPanels[i] =
            new Zorvi_0908_Rotary(this, panelTag, componentAt(roster::firstRotary, i));
        addPanel(rotaryPanels[i], true);
    }
    for (std::size_t i = 0; i < buttonPanels.size(); ++i) {
        const int component = componentAt(roster::firstButton, i);
        buttonPanels[i] = new Zorvi_0908_Button(this, panelTag, component);
        const bool testedElsewhere = component == roster::channelButton && tarvekStation == 0;
        addPanel(buttonPanels[i], component != roster::powerButton && !testedElsewhere);
    }
}

void MainWindow::addPanel(ComponentPanel* panel, bool shown)
{
    if (const auto place = panelPlace(panel->component(), faderPanels.front()->width()))
        panel->move(*place);
    panel->setVisible(shown);

    connect(this, SIGNAL(signal_DistributeMIDI(MidiMessage)), panel,
            SLOT(slot_ReceiveMIDI(MidiMessage)));
    connect(panel, SIGNAL(signal_ComponentResult(int, int)), this,
            SLOT(slot_ProcessComponentResult(int, int)));
    connect(this, SIGNAL(signal_QueueComponent(int)), panel, SLOT(slot_QueueComponent(int)));
    connect(this, SIGNAL(signal_SkipComponent(int)), panel, SLOT(slot_Skip(int)));
    connect(this, SIGNAL(signal_Init()), panel, SLOT(slot_Init()));
    connect(panel, SIGNAL(signal_Click()), audioEngine.get(), SLOT(slot_Click()));
    connect(panel, SIGNAL(signal_Beep()), audioEngine.get(), SLOT(slot_Beep()));
}

const ComponentPanel* MainWindow::panelOf(int component) const
{
    const auto index = static_cast<std::size_t>(roster::indexInKind(component));
    switch (roster::kindOf(component)) {
    case roster::Kind::Fader:
        return faderPanels.at(index);
    case roster::Kind::Button:
        return buttonPanels.at(index);
    case roster::Kind::Rotary:
        break;
    }
    return rotaryPanels.at(index);
}

void MainWindow::slot_PollDevices()
{
    const auto inputs = juce::MidiInput::getAvailableDevices();
    followSequencer(deviceManager, !inputs.isEmpty());
    if (unitport::identifierIn(inputs).isNotEmpty() && !deviceConnected)
        connectUnit();
    else if (deviceConnected && !isUnitPresent())
        disconnectUnit();
}

void MainWindow::connectUnit()
{
    deviceConnected = true;
    form->deviceLabel->setText(tr("Device: CONNECTED"));

    keepMidiInputThreadRunning();
    // Listed again, for each direction on its own: the unit may have gone meanwhile.
    const auto input = unitport::identifierIn(juce::MidiInput::getAvailableDevices());
    midiInput = juce::MidiInput::openDevice(input, this).release();
    if (midiInput != nullptr)
        midiInput->start();

    const auto output = unitport::identifierIn(juce::MidiOutput::getAvailableDevices());
    if (output.isNotEmpty()) {
        // The output is opened and let go, and the identity request is made and never sent: the
        // station leaves the unit alone and tests whatever is plugged in.
        juce::MidiOutput::openDevice(output);
        identity::request();
    }
}

void MainWindow::disconnectUnit()
{
    deviceConnected = false;
    form->deviceLabel->setText(tr("Device: NOT CONNECTED"));
    closeUnitInput();
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
        if (identity::isReply(message))
            qDebug() << "sysex inquiry reply";
        return;
    }
    if (message.isNoteOnOrOff() || message.isController())
        Q_EMIT signal_DistributeMIDI(message);
}

void MainWindow::slot_Init()
{
    Q_EMIT signal_Init();
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

    const RunStep step = stepAfterVerdict(componentNum, currentComponent, tarvekStation == 1);
    currentComponent = step.component;
    switch (step.action) {
    case RunAction::Queue:
        Q_EMIT signal_QueueComponent(currentComponent);
        break;
    case RunAction::Skip:
        Q_EMIT signal_SkipComponent(currentComponent);
        break;
    case RunAction::Finish:
        finishRun();
        // A control that was skipped last can still be worked while the notice is pending; one
        // that passed has nothing left to show.
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
    if (notice.exec() != 0)
        slot_Init();
}

void MainWindow::slot_OutputLog()
{
    testlog::Coverage coverage;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        coverage.at(static_cast<std::size_t>(c)) = panelOf(c)->coverage();
    const QString serial = form->serialNumber->text();
    logLines = testlog::lines(serial, QDateTime::currentDateTime(), coverage);
    testlog::write(testlog::path(QCoreApplication::applicationDirPath(), serial), logLines);
}
