// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

class QLineEdit;
class QMessageBox;

/// Lets the operator type or scan the next serial number while a notice is open: printable
/// characters that are typed into the notice go into the field instead, the first one in place of
/// its text. A blank counts only after another character; before, it presses the notice's button.
/// All other keys stay with the notice. GUI thread.
class SerialEntry : public QObject
{
public:
    /// Both must outlive this object.
    SerialEntry(const QMessageBox& openNotice, QLineEdit& serialField);

    /// To be called once the notice is closed: gives the field the focus. Its text is selected, so
    /// that the next scan replaces it; after typing the cursor stays at the end.
    void finish();

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    const QMessageBox& notice;
    QLineEdit& field;
    bool typed = false;
};
