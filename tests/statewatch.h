// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/mainwindow.h"
#include "tests/panelstates.h"

/// The armed component as the window announces it, and whether every panel is as it may be then.
class StateWatch : public QObject
{
public:
    explicit StateWatch(MainWindow& window)
        : panels(window.findChildren<ComponentPanel*>())
    {
        connect(&window, &MainWindow::signal_QueueComponent, this, [this](int c) { armed = c; });
    }

    QString problem() const
    {
        for (const auto* panel : panels)
            if (QString text = panelstates::problem(*panel, armed); !text.isEmpty())
                return text;
        return {};
    }

    int armed = 0;

private:
    const QList<ComponentPanel*> panels;
};
