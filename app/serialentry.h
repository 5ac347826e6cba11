// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

class QLineEdit;
class QMessageBox;

/// Lets the operator type or scan the next serial number while a notice is open: printable
/// characters go into the serial field instead of the notice, and the first one replaces its text.
/// A blank counts only after another character; before, it presses the notice's button. All other
/// keys go to the notice. On the GUI thread.
class SerialEntry : public QObject
{
public:
    /// Both must outlive this object.
    SerialEntry(const QMessageBox& notice, QLineEdit& field);

    /// For after the notice has closed: gives the field the focus and selects its text, so that the
    /// next scan replaces it. After typing the cursor stays at the end instead.
    void finish();

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    const QMessageBox& notice;
    QLineEdit& field;
    bool typed = false;
};
