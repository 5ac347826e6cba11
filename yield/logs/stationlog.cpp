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
constexpr int longestSerial = 1000;
/// Stands where a log has the 0 or 1 of a mark; no other part of a log has it.
constexpr char markPlace = '?';

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
            form += "\r\nRange " + QByteArray::number(band) + ": " + markPlace;
        form += '\n';
    }
    return form;
}

/// The marks in what follows the head. Nothing, and a reason for people, if that is not as the
/// station writes it.
std::optional<BandMarks> marksIn(const QByteArray& components, QString& reason)
{
    static const QByteArray form = formOfComponents();
    const auto componentAt = [](int position) {
        return form.left(position + blockBegin.size()).count(blockBegin) - 1;
    };
    const int size = std::min(components.size(), form.size());
    BandMarks marks;
    std::size_t mark = 0;
    for (int i = 0; i < size; ++i) {
        const char found = components[i];
        const bool isMark = form[i] == markPlace;
        if (isMark ? found != '0' && found != '1' : found != form[i]) {
            reason =
                QString("its component %1 is not as the station writes it").arg(componentAt(i));
            return std::nullopt;
        }
        if (isMark)
            marks[mark++] = found == '1';
    }
    if (components.size() == form.size())
        return marks;
    reason = size == form.size()
                 ? "it goes on after its last component"
                 : QString("it is half a log: it ends in component %1").arg(componentAt(size));
    return std::nullopt;
}

/// What is wrong with the beginning of a log; empty if nothing is.
QString whatIsWrong(const QByteArray& bytes)
{
    for (const char* byteOrderMark : {"\xFF\xFE", "\xEF\xBB\xBF"})
        if (bytes.startsWith(byteOrderMark))
            return "it has a foreign encoding: it begins with a byte order mark";
    if (bytes.size() > stationlog::longestLog)
        return "it is too long for a log";
    if (headBegin.startsWith(bytes))
        return "it is half a log: it ends before the serial";
    if (!bytes.startsWith(maker))
        return QString("it is no log: its first line is not \"%1\"").arg(QString(maker));
    return bytes.startsWith(headBegin) ? "" : "its line ends are not those of the station";
}

/// "Sat Nov 21 07:59:55 2026" as 2026-11-21T07:59:55; empty if it is not of this form.
QString isoTime(const QString& text)
{
    // As a time of Greenwich, because this computer's clock may leave that hour out.
    const QDateTime time = QDateTime::fromString(text + " GMT", Qt::TextDate);
    // Written again, because the reading forgives other languages, signs and missing zeros.
    if (QLocale::c().toString(time, "ddd MMM d HH:mm:ss yyyy") != text)
        return {};
    return time.toString("yyyy-MM-ddTHH:mm:ss");
}
} // namespace

std::optional<StationLog> stationlog::read(const QByteArray& bytes, QString& reason)
{
    const auto refused = [&](const QString& why) {
        reason = why;
        return std::nullopt;
    };
    if (const QString why = whatIsWrong(bytes); !why.isEmpty())
        return refused(why);
    // The serial may hold any character, so the last of these ends the head.
    const int headEnd = bytes.lastIndexOf('\n' + blockBegin + "FADER: 0 ");
    if (headEnd < 0)
        return refused("it is half a log: it ends before component 0");
    const auto marks = marksIn(bytes.mid(headEnd + 1), reason);
    if (!marks)
        return std::nullopt;

    const QByteArray head = bytes.left(headEnd);
    const int tab = head.lastIndexOf('\t');
    const int serialSize = tab - headBegin.size();
    if (serialSize < 0)
        return refused("it has no date after the serial");
    if (serialSize > longestSerial)
        return refused("its serial is longer than a file name can be");
    if (head.contains('\0'))
        return refused("its serial holds a NUL, which no serial can");
    // With its first bytes, because a byte order mark at the beginning would get lost.
    const QString text = QString::fromUtf8(head);
    if (text.toUtf8() != head)
        return refused("it has a foreign encoding: its head is not UTF-8");
    const QString date = text.section('\t', -1);
    const QString serial = text.chopped(date.size() + 1).mid(headBegin.size());
    const QString testedAt = isoTime(date);
    if (testedAt.isEmpty())
        return refused(QString("its date \"%1\" is in another language or form; an English system "
                               "writes \"Sat Nov 21 07:59:55 2026\"")
                           .arg(date));
    return StationLog{serial, testedAt, *marks};
}
