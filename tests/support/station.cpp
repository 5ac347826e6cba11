// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/station.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

QVector<MidiMessage> passingMessages(int componentNum)
{
    if (componentNum >= 9 && componentNum < 40) {
        const int note = componentNum - (componentNum < 18 ? 8 : 9);
        const int channel = componentNum == 18 ? 2 : 1;
        return {{0x8F + channel, note, 127}, {0x7F + channel, note, 0}};
    }
    const int controller = componentNum < 9 ? componentNum + 1 : componentNum - 30;
    QVector<MidiMessage> messages;
    for (int value = 0; value < 130; value += 10)
        messages << MidiMessage(0xB0, controller, value);
    return messages;
}

QByteArray expectedLog(const QByteArray& serial, const QByteArray& date,
                       const std::function<bool(int, int)>& isCovered)
{
    QByteArray text = "Norvane Instruments\n\r\n\r\nZORVI\t#" + serial + "\t" + date + "\n";
    const auto addBlock = [&](const char* kind, int index, int component, int bands) {
        text += QByteArray("\r\n\r\n---------------- ") + kind + ": " + QByteArray::number(index) +
                " (Component " + QByteArray::number(component) + ") ----------------";
        for (int i = 0; i < bands; ++i)
            text +=
                "\r\nRange " + QByteArray::number(i) + ": " + (isCovered(component, i) ? '1' : '0');
        if (component == 39)
            text += "\r\n NOT TESTED (Power Button)";
        text += "\n";
    };
    for (int c = 0; c <= 8; ++c)
        addBlock("FADER", c, c, 13);
    for (int c = 9; c <= 39; ++c)
        addBlock("BUTTON", c - 9, c, c == 39 ? 0 : 2);
    for (int c = 40; c <= 43; ++c)
        addBlock("ROTARY", c - 40, c, 13);
    return text;
}

QVector<int> coveredBands(const ComponentPanel& panel)
{
    QVector<int> covered;
    for (int i = 0; i < panel.coverage().size(); ++i) {
        const auto* label = panel.findChild<QLabel*>(QString("label_%1").arg(i));
        const bool isCovered = panel.coverage().at(i).covered == 1.0F;
        if (isCovered)
            covered << i;
        if (label->styleSheet() != (isCovered ? "background: white;" : "background: black;"))
            return {-1};
    }
    return covered;
}

StateWatch::StateWatch(MainWindow& window)
    : panels(window.findChildren<ComponentPanel*>())
{
    connect(&window, &MainWindow::signal_QueueComponent, this, [this](int c) { armed = c; });
}

QString StateWatch::problem() const
{
    for (const auto* panel : panels) {
        const int c = panel->getComponentNum();
        const int count = c >= 9 && c < 40 ? 2 : 13;
        const auto bands = coveredBands(*panel);
        const auto* frame = panel->findChild<QFrame*>("frame");
        const bool raised = panel->children().last() == frame;
        const QString style = frame->styleSheet();

        const bool untested = style.contains("rgba(20,20,20,200)") && raised && bands.isEmpty();
        const bool underTest =
            style.contains("blue") && panel->children().first() == frame && bands.size() < count;
        const bool done = style.contains("rgba(0,255,0,200)") && raised;
        const bool fits = c == 39 || c > armed ? untested : c == armed ? underTest : done;
        if (!fits || panel->coverage().size() != count || bands.contains(-1))
            return QString("component %1 while %2 is armed: %3").arg(c).arg(armed).arg(style);
    }
    return {};
}

QString station::deviceLabel(const MainWindow& window)
{
    return window.findChild<QLabel*>("deviceLabel")->text();
}

void station::saveLog(const MainWindow& window, const QString& serial)
{
    window.findChild<QLineEdit*>("serialNumber")->setText(serial);
    click(window, "log");
}

void station::click(const MainWindow& window, const QString& button)
{
    QTest::mouseClick(window.findChild<QAbstractButton*>(button), Qt::LeftButton);
}

void station::receive(MainWindow& window, const QVector<MidiMessage>& messages)
{
    for (const auto& message : messages)
        window.handleIncomingMidiMessage(nullptr, message);
}

QByteArray station::contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

station::Program::Program(const QString& program, const QString& arguments)
{
    start(program, arguments.split(' ', Qt::SkipEmptyParts));
}

int station::Program::status()
{
    const bool hasEnded = state() == NotRunning || waitForFinished();
    return hasEnded && exitStatus() == NormalExit ? exitCode() : -1;
}

QMessageBox* station::openNotice()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

station::NoticeCloser::NoticeCloser()
{
    callOnTimeout([this] {
        if (auto* notice = openNotice()) {
            texts << notice->text();
            notice->accept();
        }
    });
    start(10);
}

station::ReceivedMessages::ReceivedMessages(const MainWindow& window)
{
    connect(&window, &MainWindow::signal_DistributeMIDI, this,
            [this](const MidiMessage& message) { messages << bytesOf(message); });
}

QByteArray station::bytesOf(const MidiMessage& message)
{
    return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
}

bool station::receives(const MainWindow& window, SimulatedUnit& unit)
{
    const ReceivedMessages received(window);
    unit.send({0xB0, 100, 64}); // a controller that no component has
    return QTest::qWaitFor([&] { return !received.messages.isEmpty(); });
}

void station::quiet()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}
