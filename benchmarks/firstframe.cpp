// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QTimer>

#include <unistd.h>

/// Loaded by Qt into an unchanged program: writes a byte to stdout once its first frame is painted.
class FirstFrame : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "firstframe.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        auto* watcher = new QObject(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(this);
        return watcher;
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        QCoreApplication::instance()->removeEventFilter(this);
        // The rest of the frame is painted and handed to the screen before the event loop goes on.
        QTimer::singleShot(0, [] {
            if (write(STDOUT_FILENO, "f", 1) != 1)
                QCoreApplication::exit(EXIT_FAILURE);
        });
        return false;
    }
};

#include "firstframe.moc"
