// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/stationlog.h"

#include <QDate>
#include <QLocale>
#include <QStringList>
#include <QTime>

#include <vector>

namespace
{
const QByteArray maker = QByteArrayLiteral("Norvane Instruments");
const QByteArray headBegin = maker + QByteArrayLiteral("\n\r\n\r\nZORVI\t#");
const QByteArray blockBegin = QByteArrayLiteral("\r\n\r\n---------------- ");
constexpr int longestSerial = 1000;
/// Stands where a log has the 0 or 1 of a mark; no other part of a log has it.
constexpr char markPlace = '?';

/// What follows the head of a log: for each component its heading and its ranges.
std::vector<QByteArray> blocksOfALog()
{
    const QByteArray kinds[] = {"FADER", "BUTTON", "ROTARY"};
    std::vector<QByteArray> blocks;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        QByteArray block = blockBegin + kinds[static_cast<int>(roster::kindOf(c))] + ": " +
                           QByteArray::number(roster::indexInKind(c)) + " (Component " +
                           QByteArray::number(c) + ") ----------------";
        if (c == roster::powerButton)
            block += "\r\n NOT TESTED (Power Button)";
        for (int band = 0; band < bandmarks::bandCount(c); ++band)
            block += "\r\nRange " + QByteArray::number(band) + ": " + markPlace;
        blocks.push_back(block + '\n');
    }
    return blocks;
}

/// The marks of a log whose head ends there. Nothing, and a reason for people, if the rest is not
/// as the station writes it.
std::optional<BandMarks> marksAfter(int headSize, const QByteArray& bytes, QString& reason)
{
    static const std::vector<QByteArray> blocks = blocksOfALog();
    BandMarks marks;
    std::size_t mark = 0;
    int position = headSize;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        for (const char expected : blocks.at(static_cast<std::size_t>(c))) {
            if (position == bytes.size()) {
                reason = QString("it is half a log: it ends in component %1").arg(c);
                return std::nullopt;
            }
            const char found = bytes[position++];
            const bool isMark = expected == markPlace;
            if (isMark ? found != '0' && found != '1' : found != expected) {
                reason = QString("its component %1 is not as the station writes it").arg(c);
                return std::nullopt;
            }
            if (isMark)
                marks[mark++] = found == '1';
        }
    }
    if (position == bytes.size())
        return marks;
    reason = "it goes on after its last component";
    return std::nullopt;
}

/// What is wrong with the beginning of a log; empty if nothing is.
QString whatIsWrong(const QByteArray& bytes)
{
    if (bytes.size() > stationlog::longestLog)
        return "it is too long for a log";
    if (bytes.isEmpty())
        return "it is empty";
    for (const char* byteOrderMark : {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF"})
        if (bytes.startsWith(byteOrderMark))
            return "it has a foreign encoding: it begins with a byte order mark";
    if (headBegin.startsWith(bytes))
        return "it is half a log: it ends before the serial";
    if (!bytes.startsWith(maker))
        return QString("it is no log: its first line is not \"%1\"").arg(QString(maker));
    return bytes.startsWith(headBegin) ? "" : "its line ends are not those of the station";
}

/// "Sat Nov 21 07:59:55 2026" as 2026-11-21T07:59:55; empty if it is not of this form. Date and
/// time are read apart: together they could be a time that this computer's clock leaves out.
QString isoTime(const QString& text)
{
    const QStringList words = text.split(' ');
    if (words.size() != 5)
        return {};
    const QLocale english = QLocale::c();
    const QString day = QStringList(words.mid(0, 3)).join(' ');
    const QDate date = english.toDate(day + ' ' + words[4], "ddd MMM d yyyy");
    const QTime time = QTime::fromString(words[3], Qt::ISODate);
    // Written again, because the reading forgives signs and missing zeros.
    const QString written = english.toString(date, "ddd MMM d ") + time.toString(Qt::ISODate) +
                            english.toString(date, " yyyy");
    if (!date.isValid() || !time.isValid() || written != text)
        return {};
    return date.toString(Qt::ISODate) + 'T' + time.toString(Qt::ISODate);
}
} // namespace

std::optional<StationLog> stationlog::read(const QByteArray& bytes, QString& reason)
{
    const auto refused = [&](const QString& why) {
        reason = why;
        return std::nullopt;
    };
    reason = whatIsWrong(bytes);
    if (!reason.isEmpty())
        return std::nullopt;
    // The serial may hold any character, so the last of these ends the head.
    const int headEnd = bytes.lastIndexOf('\n' + blockBegin + "FADER: 0 ");
    if (headEnd < 0)
        return refused("it is half a log: it ends before component 0");
    const auto marks = marksAfter(headEnd + 1, bytes, reason);
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
