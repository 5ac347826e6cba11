// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QCoreApplication>
#include <QWidget>
#include <QWindow>

/// Shows a window and returns once its first frame was painted.
inline void showPainted(QWidget& window)
{
    window.show();
    while (!window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
}

/// Shows a window as long as this lives.
class Shown
{
public:
    explicit Shown(QWidget& shown)
        : window(shown)
    {
        showPainted(window);
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;
    ~Shown() { window.hide(); }

private:
    QWidget& window;
};
