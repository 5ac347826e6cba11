// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"

#include <QByteArray>

void fitCaptionsToLayout()
{
#ifdef Q_OS_LINUX
    // At a desktop's usual 96 dots per inch, Debian's 9 point Sans Serif (DejaVu Sans) is too wide
    // for half of the captions, "Device: NOT CONNECTED" among them; 80 is the most at which all of
    // them fit.
    qputenv("QT_FONT_DPI", QByteArrayLiteral("80"));
#endif
}
