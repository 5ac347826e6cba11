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

/// The marks in what follows the head. Nothing, and a reason for the user, if that is not as the
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
        const bool isMark = form[i] == markPlaceholder;
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

/// The problem with the beginning of a log; empty if there is none.
QString headerProblem(const QByteArray& bytes)
{
    for (const char* byteOrderMark : {"\xFF\xFE", "\xEF\xBB\xBF"})
        if (bytes.startsWith(byteOrderMark))
            return "it begins with a byte order mark";
    if (bytes.size() > stationlog::maxLogSize)
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
    // As GMT, because this computer's time zone may leave that hour out.
    const QDateTime time = QDateTime::fromString(text + " GMT", Qt::TextDate);
    // Compared with its own text, because Qt accepts other languages, signs and missing zeros.
    if (QLocale::c().toString(time, "ddd MMM d HH:mm:ss yyyy") != text)
        return {};
    return time.toString("yyyy-MM-ddTHH:mm:ss");
}
} // namespace

std::optional<StationLog> stationlog::read(const QByteArray& bytes, QString& reason)
{
    const auto rejected = [&](const QString& why) {
        reason = why;
        return std::nullopt;
    };
    if (const QString why = headerProblem(bytes); !why.isEmpty())
        return rejected(why);
    // The serial may hold any character, so the last of these ends the head.
    const int headEnd = bytes.lastIndexOf('\n' + blockBegin + "FADER: 0 ");
    if (headEnd < 0)
        return rejected("it is half a log: it ends before component 0");
    const auto marks = marksIn(bytes.mid(headEnd + 1), reason);
    if (!marks)
        return std::nullopt;

    const QByteArray head = bytes.left(headEnd);
    const int tab = head.lastIndexOf('\t');
    const int serialSize = tab - headBegin.size();
    if (serialSize < 0)
        return rejected("it has no date after the serial");
    if (serialSize > maxSerialSize)
        return rejected("its serial is longer than a file name can be");
    if (head.contains('\0'))
        return rejected("its serial holds a NUL, which no serial can");
    // With its first bytes, because a byte order mark at the beginning would get lost.
    const QString text = QString::fromUtf8(head);
    if (text.toUtf8() != head)
        return rejected("it is not valid UTF-8");
    const QString date = text.section('\t', -1);
    const QString serial = text.chopped(date.size() + 1).mid(headBegin.size());
    const QString testedAt = isoTime(date);
    if (testedAt.isEmpty())
        return rejected(QString("its date \"%1\" is in another language or form; an English system "
                                "writes \"Sat Nov 21 07:59:55 2026\"")
                            .arg(date));
    return StationLog{serial, testedAt, *marks};
}
