// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>

#include <functional>

/// The bytes of a log, put together without the station's code: see docs/log-format.md.
/// covered: whether a component's band is to be marked.
inline QByteArray expectedLog(const QByteArray& serial, const QByteArray& date,
                              const std::function<bool(int, int)>& covered)
{
    QByteArray text = "Norvane Instruments\n\r\n\r\nZORVI\t#" + serial + "\t" + date + "\n";
    const auto block = [&](const char* kind, int index, int component, int bands) {
        text += QByteArray("\r\n\r\n---------------- ") + kind + ": " + QByteArray::number(index) +
                " (Component " + QByteArray::number(component) + ") ----------------";
        for (int i = 0; i < bands; ++i)
            text +=
                "\r\nRange " + QByteArray::number(i) + ": " + (covered(component, i) ? '1' : '0');
        if (component == 39)
            text += "\r\n NOT TESTED (Power Button)";
        text += "\n";
    };
    for (int c = 0; c <= 8; ++c)
        block("FADER", c, c, 13);
    for (int c = 9; c <= 39; ++c)
        block("BUTTON", c - 9, c, c == 39 ? 0 : 2);
    for (int c = 40; c <= 43; ++c)
        block("ROTARY", c - 40, c, 13);
    return text;
}
