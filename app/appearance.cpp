// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/appearance.h"

#include "app/captionsize.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QPointer>
#include <QStyle>
#include <QStyleFactory>

namespace
{
/// Every text has a contrast of at least 4.5:1 to what is behind it.
QPalette lightPalette()
{
    const QColor grey(0x5f, 0x5f, 0x5f);
    QPalette palette(QColor(0xef, 0xef, 0xef)); // of windows and buttons; text is black
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x6f, 0xb5));
    palette.setColor(QPalette::PlaceholderText, grey);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, grey);
    return palette;
}

/// Sets the appearance again after the desktop has set its own: some do so when the event loop
/// starts, and when the user changes the theme.
class AppearanceKeeper : public QObject
{
public:
    explicit AppearanceKeeper(QObject* application)
        : QObject(application)
    {
        set();
        application->installEventFilter(this);
    }

    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        const bool hasChanged = event->type() == QEvent::ApplicationPaletteChange ||
                                event->type() == QEvent::ApplicationFontChange;
        // Later, because the change that the event announces is not complete.
        if (receiver == parent() && hasChanged && !isSetting)
            QMetaObject::invokeMethod(this, &AppearanceKeeper::set, Qt::QueuedConnection);
        return false;
    }

private:
    void set()
    {
        isSetting = true;
        setCaptionFont(); // a new style lays the captions out with it
        if (style == nullptr) {
            style = QStyleFactory::create(QStringLiteral("Fusion"));
            QApplication::setStyle(style);
            // The application deletes a style that is replaced, while it sets the new one.
            connect(style, &QObject::destroyed, this, &AppearanceKeeper::set, Qt::QueuedConnection);
        }
        QApplication::setPalette(lightPalette());
        setCaptionFont(); // with some platform themes a new style takes the desktop's font back
        isSetting = false;
    }

    bool isSetting = false;
    QPointer<QStyle> style; ///< Ours, while the application has it.
};
} // namespace

void setAppearance()
{
    new AppearanceKeeper(qApp); // which owns it
}
