// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/stationlog.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace
{
const QByteArray maker = QByteArrayLiteral("Norvane Instruments");
const QByteArray headBegin = maker + QByteArrayLiteral("\n\r\n\r\nZORVI\t#");
const QByteArray blockBegin = QByteArrayLiteral("\r\n\r\n---------------- ");
constexpr int maxSerialSize = 1000;
/// Stands for the 0 or 1 of a mark; no other part of a log has it.
constexpr char markPlaceholder = '?';

/// What follows the head in every log: for each component its heading and its ranges.
QByteArray formOfComponents()
{
    const QByteArray kinds[] = {"FADER", "BUTTON", "ROTARY"};
    QByteArray form;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        form += blockBegin + kinds[static_cast<int>(roster::kindOf(c))] + ": " +
                QByteArray::number(roster::indexInKind(c)) + " (Component " +
                QByteArray::number(c) + ") ----------------";
        if (c == roster::powerButton)
            form += "\r\n NOT TESTED (Power Button)";
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            form += "\r\nRange " + QByteArray::number(band) + ": " + markPlaceholder;
        form += '\n';
    }
    return form;
}

/// The marks in what follows the head.
BandMarks readMarks(const QByteArray& components)
{
    static const QByteArray form = formOfComponents();
    QByteArray expected = form;
    BandMarks marks;
    int position = form.indexOf(markPlaceholder);
    for (std::size_t mark = 0; mark < marks.size() && position < components.size(); ++mark) {
        marks[mark] = components[position] == '1';
        expected[position] = marks[mark] ? '1' : '0';
        position = form.indexOf(markPlaceholder, position + 1);
    }
    const auto end = components.cend();
    const auto [found, wanted] =
        std::mismatch(components.cbegin(), end, expected.cbegin(), expected.cend());
    if (found == end && wanted == expected.cend())
        return marks;
    if (wanted == expected.cend())
        throw NotALog("it goes on after its last component");
    const auto differsAt = static_cast<int>(found - components.cbegin());
    const int component = form.left(differsAt + blockBegin.size()).count(blockBegin) - 1;
    const QString reason = found == end ? "it is half a log: it ends in component %1"
                                        : "its component %1 is not as the station writes it";
    throw NotALog(reason.arg(component));
}

void checkHead(const QByteArray& bytes)
{
    if (bytes.size() > stationlog::maxLogSize)
        throw NotALog("it is too long for a log");
    if (headBegin.startsWith(bytes))
        throw NotALog("it is half a log: it ends before the serial");
    if (!bytes.startsWith(maker))
        throw NotALog(QString("it is no log: its first line is not \"%1\"").arg(QString(maker)));
    if (!bytes.startsWith(headBegin))
        throw NotALog("its line ends are not those of the station");
}

/// "Sat Nov 21 07:59:55 2026" as 2026-11-21T07:59:55.
QString isoTime(const QString& text)
{
    // As GMT, because this computer's time zone may leave that hour out.
    const QDateTime time = QDateTime::fromString(text + " GMT", Qt::TextDate);
    // Compared with its own text, because Qt accepts other languages, signs and missing zeros.
    if (QLocale::c().toString(time, "ddd MMM d HH:mm:ss yyyy") != text)
        throw NotALog(QString("its date \"%1\" is in another language or form; an English system "
                              "writes \"Sat Nov 21 07:59:55 2026\"")
                          .arg(text));
    return time.toString("yyyy-MM-ddTHH:mm:ss");
}
} // namespace

StationLog stationlog::read(const QByteArray& bytes)
{
    checkHead(bytes);
    // The serial may hold any character, so the last of these ends the head.
    const int headEnd = bytes.lastIndexOf('\n' + blockBegin + "FADER: 0 ");
    if (headEnd < 0)
        throw NotALog("it is half a log: it ends before component 0");
    const BandMarks marks = readMarks(bytes.mid(headEnd + 1));

    const QByteArray head = bytes.left(headEnd);
    const int serialSize = head.lastIndexOf('\t') - headBegin.size();
    if (serialSize < 0)
        throw NotALog("it has no date after the serial");
    if (serialSize > maxSerialSize)
        throw NotALog("its serial is longer than a file name can be");
    if (head.contains('\0'))
        throw NotALog("its serial holds a NUL, which no serial can");
    // With its first bytes, because a byte order mark at the beginning would get lost.
    const QString text = QString::fromUtf8(head);
    if (text.toUtf8() != head)
        throw NotALog("it is not valid UTF-8");
    const QString date = text.section('\t', -1);
    const QString serial = text.chopped(date.size() + 1).mid(headBegin.size());
    return {serial, isoTime(date), marks};
}
