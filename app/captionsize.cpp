// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"

#include <QApplication>
#include <QFont>

void fitCaptionsToLayout()
{
#ifdef Q_OS_LINUX
    // At a desktop's usual 96 dots per inch, captions in Debian's 9 point Sans Serif (DejaVu Sans)
    // are cut off, "Device: NOT CONNECTED" among them. At 80 all of them fit.
    qputenv("QT_FONT_DPI", QByteArrayLiteral("80"));
#endif
}

void setCaptionFont()
{
#ifdef Q_OS_LINUX
    // This also drops the fonts that a desktop has for single kinds of widgets.
    QApplication::setFont(QFont(QStringLiteral("Sans Serif"), 9));
#endif
}
