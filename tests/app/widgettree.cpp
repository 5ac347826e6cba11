// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/app/widgettree.h"

#include "panels/componentpanel.h"

#include <QMetaProperty>
#include <QSet>
#include <QTextStream>

namespace
{
const char* const shown[] = {"windowTitle", "text",      "checked",  "frameShape",  "frameShadow",
                             "minimum",     "maximum",   "pageStep", "orientation", "maxLength",
                             "inputMask",   "alignment", "readOnly", "styleSheet"};

void write(QTextStream& out, const QWidget& widget, int depth, QSet<QString>& seen)
{
    const QString type = widget.metaObject()->className();
    out << QString(2 * depth, ' ') << type << ' ' << widget.objectName() << ' ' << widget.width()
        << 'x' << widget.height();
    if (!widget.isWindow())
        out << " at " << widget.x() << ',' << widget.y();
    if (widget.isHidden())
        out << " hidden";
    const auto* panel = qobject_cast<const ComponentPanel*>(&widget);
    if (panel != nullptr)
        out << " component " << panel->component();
    if (panel != nullptr && seen.contains(type)) {
        out << '\n';
        return;
    }
    seen << type;
    if (!widget.property("text").toString().isEmpty())
        out << ' ' << widget.font().pointSize() << "pt";
    for (const char* name : shown) {
        const auto property = widget.metaObject()->property(widget.metaObject()->indexOfProperty(name));
        const QVariant value = property.read(&widget);
        if (!value.isValid() || value.toString().isEmpty() || value == false)
            continue;
        out << ' ' << name << '=' << value.toString().simplified();
    }
    out << '\n';
    for (const auto* child : widget.children())
        if (child->isWidgetType() && !child->objectName().startsWith("qt_"))
            write(out, *static_cast<const QWidget*>(child), depth + 1, seen);
}
} // namespace

QString widgetTree(const QWidget& widget)
{
    QString text;
    QTextStream out(&text);
    QSet<QString> seen;
    write(out, widget, 0, seen);
    return text;
}
