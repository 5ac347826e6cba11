// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/mainwindow.h"
#include "simulator/simulatedunit.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

/// What the reliability tests do to a station, and what they see of it, as an operator would.
namespace station
{
inline QString deviceLabel(const MainWindow& window)
{
    return window.findChild<QLabel*>(QStringLiteral("deviceLabel"))->text();
}

inline void setSerial(const MainWindow& window, const QString& serial)
{
    window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
}

inline QMessageBox* openNotice()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// Counts what the panels hear, on their thread.
class Hearing : public QObject
{
public:
    explicit Hearing(const MainWindow& window)
    {
        connect(&window, &MainWindow::signal_DistributeMIDI, this, [this] { ++count; });
    }
    int count = 0;
};

/// Whether a message that the unit sends now arrives at the panels.
inline bool hears(const MainWindow& window, SimulatedUnit& unit)
{
    const Hearing hearing(window);
    unit.send({0xB0, 100, 64}); // a controller that is nobody's
    return QTest::qWaitFor([&] { return hearing.count > 0; });
}

/// Silences the debug lines, of which there are thousands in these tests.
inline void quiet()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}
} // namespace station
