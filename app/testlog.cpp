// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"

#include "app/filereplacement.h"

#include <QTextStream>

namespace
{
QString folder(const QString& applicationDirectory)
{
    return applicationDirectory + QStringLiteral("/Logs");
}

QString kindName(int component)
{
    switch (roster::kindOf(component)) {
    case roster::Kind::Fader:
        return QStringLiteral("FADER");
    case roster::Kind::Button:
        return QStringLiteral("BUTTON");
    case roster::Kind::Rotary:
        break;
    }
    return QStringLiteral("ROTARY");
}

QString block(int component, const QVector<ComponentRange>& ranges)
{
    QString text = QStringLiteral("\r\n\r\n---------------- %1: %2 (Component %3) ----------------")
                       .arg(kindName(component), QString::number(roster::indexInKind(component)),
                            QString::number(component));
    if (component == roster::powerButton)
        return text + QStringLiteral("\r\n NOT TESTED (Power Button)");
    // Piece by piece: to search every line for place markers took most of the time that a log takes
    // before it goes to disk.
    for (int i = 0; i < ranges.size(); ++i) {
        text += QStringLiteral("\r\nRange ");
        text += QString::number(i);
        text += QStringLiteral(": ");
        text += QString::number(static_cast<double>(ranges.at(i).covered), 'g', -1);
    }
    return text;
}
} // namespace

QStringList testlog::lines(const QString& serial, const QDateTime& when, const Coverage& coverage)
{
    QStringList lines;
    lines.reserve(2 + roster::componentCount);
    lines << QStringLiteral("Norvane Instruments");
    // Both at once, so that a serial with a place marker in it stays as typed.
    lines << QStringLiteral("\r\n\r\nZORVI\t#%1\t%2").arg(serial, when.toString(Qt::TextDate));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        lines << block(c, coverage.at(static_cast<std::size_t>(c)));
    return lines;
}

QString testlog::path(const QString& applicationDirectory, const QString& serial)
{
    return folder(applicationDirectory) + QStringLiteral("/ZORVI_%1.txt").arg(serial);
}

void testlog::write(const QString& path, const QStringList& lines)
{
    QByteArray bytes;
    QTextStream stream(&bytes);
    for (const QString& line : lines)
        stream << line << '\n';
    stream.flush();
    filereplacement::write(path, bytes);
}

void testlog::removeLeftovers(const QString& applicationDirectory)
{
    filereplacement::removeLeftovers(folder(applicationDirectory));
}
