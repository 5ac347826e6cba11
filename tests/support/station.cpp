// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/station.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

QString station::deviceLabel(const MainWindow& window)
{
    return window.findChild<QLabel*>(QStringLiteral("deviceLabel"))->text();
}

void station::setSerial(const MainWindow& window, const QString& serial)
{
    window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
}

void station::click(const MainWindow& window, const QString& button)
{
    QTest::mouseClick(window.findChild<QAbstractButton*>(button), Qt::LeftButton);
}

void station::receive(MainWindow& window, const QVector<juce::MidiMessage>& messages)
{
    for (const auto& message : messages)
        window.handleIncomingMidiMessage(nullptr, message);
}

QMessageBox* station::openNotice()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

station::Hearing::Hearing(const MainWindow& window)
{
    connect(&window, &MainWindow::signal_DistributeMIDI, this,
            [this](const juce::MidiMessage& message) { messages << bytesOf(message); });
}

QByteArray station::bytesOf(const juce::MidiMessage& message)
{
    return {reinterpret_cast<const char*>(message.getRawData()), message.getRawDataSize()};
}

bool station::hears(const MainWindow& window, SimulatedUnit& unit)
{
    const Hearing hearing(window);
    unit.send({0xB0, 100, 64}); // a controller that no component has
    return QTest::qWaitFor([&] { return !hearing.messages.isEmpty(); });
}

void station::quiet()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}
