// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/serialentry.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>

#include <algorithm>

namespace
{
bool isPrintable(const QString& text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](QChar c) { return c.isPrint(); });
}
} // namespace

SerialEntry::SerialEntry(const QMessageBox& openNotice, QLineEdit& serialField)
    : notice(openNotice)
    , field(serialField)
{
    // On the application: the notice's button, which receives the keys, is made when it is shown.
    QApplication::instance()->installEventFilter(this);
}

void SerialEntry::finish()
{
    QApplication::instance()->removeEventFilter(this);
    field.activateWindow();
    field.setFocus();
    if (!typed)
        field.selectAll();
}

bool SerialEntry::eventFilter(QObject* receiver, QEvent* event)
{
    const auto* widget = qobject_cast<const QWidget*>(receiver);
    if (event->type() != QEvent::KeyPress || widget == nullptr || widget->window() != &notice)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool command = (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0;
    if (command || !isPrintable(key.text()) || (!typed && key.text().trimmed().isEmpty()))
        return false;
    if (!typed)
        field.selectAll();
    field.insert(key.text());
    typed = true;
    return true;
}
