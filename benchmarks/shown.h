// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>
#include <QWindow>

/// Handles what waits and paints what it changed, which processEvents leaves to its next call.
inline void paintChanges(QWidget& window)
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(&window, QEvent::UpdateRequest);
}

/// Shows a window and returns once its first frame was painted.
inline void showPainted(QWidget& window)
{
    window.show();
    while (!window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    paintChanges(window);
}
