// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The station as a process of its own, for tests that end it. The first argument says what goes on:
// "logs" (the second is the serial number), "flood", "sound", "notice" or nothing; with those the
// second says how it ends: "close", "manager" (asks through the X server, as a window manager does)
// or "signal" (from outside). It prints "ready" once things are going on.

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "app/testlog.h"
#include "simulator/simulatedunit.h"

#include <QApplication>
#include <QLineEdit>
#include <QTextStream>

#include <xcb/xcb.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace
{
void ready()
{
    QTextStream(stdout) << "ready" << Qt::endl;
}

/// Sends for every control of the unit from a thread of its own until it goes.
class Flood
{
public:
    ~Flood()
    {
        stop = true;
        if (thread.joinable())
            thread.join();
    }

    void start(SimulatedUnit& unit)
    {
        thread = std::thread([this, &unit] {
            for (int value = 0; !stop; value = (value + 1) % 128) {
                for (int controller = 1; controller <= 13; ++controller)
                    unit.send({0xB0, controller, value});
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }

private:
    std::atomic<bool> stop{false};
    std::thread thread;
};

/// Writes the log as fast as it can: marks covered in one, none in the next.
class LogWriter : public QObject
{
    Q_OBJECT

public:
    LogWriter(MainWindow& station, const QString& serial)
        : window(station)
    {
        window.findChild<QLineEdit*>(QStringLiteral("serialNumber"))->setText(serial);
        connect(&timer, SIGNAL(timeout()), this, SLOT(slot_Write()));
        timer.start(0);
    }

public Q_SLOTS:
    void slot_Write()
    {
        window.slot_Init();
        for (int value = 0; covered && value < 130; value += 10)
            window.handleIncomingMidiMessage(nullptr, {0xB0, 1, value});
        covered = !covered;
        window.slot_OutputLog();
        if (!reported)
            ready();
        reported = true;
    }

private:
    MainWindow& window;
    QTimer timer;
    bool covered = false;
    bool reported = false;
};

/// Asks for every open window to be closed, again and again until none is left: a notice comes
/// before the window that it blocks.
class Closer : public QObject
{
    Q_OBJECT

public:
    explicit Closer(bool throughWindowManager)
        : connection(throughWindowManager ? xcb_connect(nullptr, nullptr) : nullptr)
    {
        connect(&timer, SIGNAL(timeout()), this, SLOT(slot_Close()));
    }
    ~Closer() override
    {
        if (connection != nullptr)
            xcb_disconnect(connection);
    }
    Closer(const Closer&) = delete;
    Closer& operator=(const Closer&) = delete;

    void start()
    {
        slot_Close();
        timer.start(50);
    }

public Q_SLOTS:
    void slot_Close()
    {
        if (connection == nullptr) {
            QApplication::closeAllWindows();
            return;
        }
        for (const QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible())
                sendDeleteWindow(static_cast<xcb_window_t>(widget->winId()));
        xcb_flush(connection);
    }

private:
    xcb_atom_t atom(const char* name)
    {
        auto* reply = xcb_intern_atom_reply(
            connection,
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
            nullptr);
        const xcb_atom_t number = reply->atom;
        std::free(reply);
        return number;
    }

    /// What a window manager sends when its close button is pressed.
    void sendDeleteWindow(xcb_window_t window)
    {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom("WM_PROTOCOLS");
        event.data.data32[0] = atom("WM_DELETE_WINDOW");
        xcb_send_event(connection, 0, window, 0, reinterpret_cast<const char*>(&event));
    }

    xcb_connection_t* connection;
    QTimer timer;
};
} // namespace

int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    const juce::ScopedJuceInitialiser_GUI juceLibrary;
    const QString activity = application.arguments().value(1);
    const QString argument = application.arguments().value(2);

    testlog::removeLeftovers(QCoreApplication::applicationDirPath());
    SimulatedUnit unit;
    MainWindow window;
    window.show();
    std::unique_ptr<LogWriter> writer;
    if (activity == QLatin1String("logs")) {
        writer = std::make_unique<LogWriter>(window, argument);
        return QApplication::exec();
    }

    Closer closer(argument == QLatin1String("manager"));
    const auto begun = [&] {
        ready();
        if (argument != QLatin1String("signal"))
            closer.start();
    };
    Flood flood;
    QTimer bells;
    int headStartMs = 0; // with no activity: before the first poll
    if (activity == QLatin1String("flood")) {
        unit.plug();
        window.slot_PollDevices();
        flood.start(unit);
        headStartMs = 50;
    } else if (activity == QLatin1String("notice")) {
        QTimer::singleShot(0, &window, SLOT(slot_TestComplete()));
        headStartMs = 50;
    } else if (activity == QLatin1String("sound")) {
        QObject::connect(&bells, SIGNAL(timeout()), &window, SIGNAL(signal_Ding()));
        bells.start(5);
        headStartMs = 200;
    }
    QTimer::singleShot(headStartMs, &window, begun);
    return QApplication::exec();
}

#include "station_child.moc"
