// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/stationlog.h"

#include <QDate>
#include <QLocale>
#include <QStringList>
#include <QTextCodec>
#include <QTime>

#include <algorithm>
#include <array>

namespace
{
const QByteArray maker = QByteArrayLiteral("Norvane Instruments");
const QByteArray headBegin = maker + QByteArrayLiteral("\n\r\n\r\nZORVI\t#");
const QByteArray blockBegin = QByteArrayLiteral("\r\n\r\n---------------- ");
constexpr int longestSerial = 1000;

/// All that follows the head of a log has the same length in every log.
struct Body {
    QByteArray text; ///< With every mark 0.
    std::array<int, bandMarkCount> marks{};
    std::array<int, roster::componentCount> blockEnds{};

    Body()
    {
        static const std::array<const char*, 3> kinds = {"FADER", "BUTTON", "ROTARY"};
        for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
            text += blockBegin + kinds.at(static_cast<std::size_t>(roster::kindOf(c))) + ": " +
                    QByteArray::number(roster::indexInKind(c)) + " (Component " +
                    QByteArray::number(c) + ") ----------------";
            if (c == roster::powerButton)
                text += "\r\n NOT TESTED (Power Button)";
            for (int band = 0; band < bandmarks::bandCount(c); ++band) {
                text += "\r\nRange " + QByteArray::number(band) + ": 0";
                marks.at(bandmarks::markIndex(c, band)) = text.size() - 1;
            }
            text += '\n';
            blockEnds.at(static_cast<std::size_t>(c)) = text.size();
        }
    }

    int componentAt(int position) const
    {
        int c = roster::firstComponent;
        while (c < roster::lastComponent && position >= blockEnds.at(static_cast<std::size_t>(c)))
            ++c;
        return c;
    }
};

const Body& body()
{
    static const Body theBody;
    return theBody;
}

/// Where bytes are first not as in any body; as many as a body has, or the bytes, if they are.
int firstDifference(const QByteArray& bytes)
{
    const QByteArray& text = body().text;
    const auto& marks = body().marks;
    const int size = std::min(bytes.size(), text.size());
    for (int i = 0; i < size; ++i)
        if (bytes[i] != text[i] &&
            (bytes[i] != '1' || !std::binary_search(marks.begin(), marks.end(), i)))
            return i;
    return size;
}

/// Nothing if the bytes are no body.
std::optional<BandMarks> marksOf(const QByteArray& bytes)
{
    if (bytes.size() != body().text.size() || firstDifference(bytes) < bytes.size())
        return std::nullopt;
    BandMarks marks;
    for (std::size_t i = 0; i < marks.size(); ++i)
        marks[i] = bytes[body().marks.at(i)] == '1';
    return marks;
}

/// What is wrong with bytes that do not end in the body of a log.
QString whatIsWrong(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return "it is empty";
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") ||
        bytes.startsWith("\xEF\xBB\xBF"))
        return "it has a foreign encoding: it begins with a byte order mark";
    if (headBegin.startsWith(bytes))
        return "it is half a log: it ends before the serial";
    if (!bytes.startsWith(headBegin))
        return bytes.startsWith(maker) ? QString("its line ends are not those of the station")
                                       : QString("it is no log: its first line is not \"%1\"")
                                             .arg(QString::fromLatin1(maker));
    const int begin = bytes.indexOf('\n' + blockBegin + "FADER: 0 ") + 1;
    if (begin == 0)
        return "it is half a log: it ends before component 0";
    const int wrong = firstDifference(bytes.mid(begin));
    if (wrong == body().text.size())
        return "it goes on after its last component";
    const QString component = QString::number(body().componentAt(wrong));
    return begin + wrong == bytes.size()
               ? "it is half a log: it ends in component " + component
               : "its component " + component + " is not as the station writes it";
}

/// The text, or nothing if it is not UTF-8.
std::optional<QString> fromUtf8(const QByteArray& bytes)
{
    static QTextCodec* const codec = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars != 0 || state.remainingChars != 0)
        return std::nullopt;
    return text;
}

/// "Sat Nov 21 07:59:55 2026" as 2026-11-21T07:59:55; empty if it is not of this form.
QString isoTime(const QString& date)
{
    QStringList words = date.split(' ');
    if (words.size() != 5)
        return {};
    const QString clock = words.takeAt(3);
    // Apart, because together they would have to exist in this computer's time zone.
    const QLocale english = QLocale::c();
    const QString form = "ddd MMM d yyyy";
    const QDate day = english.toDate(words.join(' '), form);
    const QTime time = QTime::fromString(clock, "HH:mm:ss");
    // Written again, because the reading forgives signs, missing zeros and other weekdays.
    if (english.toString(day, form) != words.join(' ') || time.toString("HH:mm:ss") != clock)
        return {};
    return day.toString(Qt::ISODate) + 'T' + clock;
}
} // namespace

std::optional<StationLog> stationlog::read(const QByteArray& bytes, QString& reason)
{
    const auto refused = [&](const QString& why) {
        reason = why;
        return std::nullopt;
    };
    if (bytes.size() > longestLog)
        return refused("it is too long for a log");
    const int headSize = bytes.size() - body().text.size();
    const auto marks =
        headSize > headBegin.size() && bytes.startsWith(headBegin) && bytes[headSize - 1] == '\n'
            ? marksOf(bytes.mid(headSize))
            : std::nullopt;
    if (!marks)
        return refused(whatIsWrong(bytes));

    // The serial may hold any character, so the last tab ends it.
    const int tab = bytes.lastIndexOf('\t', headSize - 1);
    if (tab < headBegin.size())
        return refused("it has no date after the serial");
    const QByteArray serial = bytes.mid(headBegin.size(), tab - headBegin.size());
    const QByteArray date = bytes.mid(tab + 1, headSize - 1 - (tab + 1));
    const auto serialText = fromUtf8(serial);
    const auto dateText = fromUtf8(date);
    if (!serialText || !dateText)
        return refused("it has a foreign encoding: its head is not UTF-8");
    if (serial.contains('\0'))
        return refused("its serial holds a NUL, which no serial can");
    if (serial.size() > longestSerial)
        return refused("its serial is longer than a file name can be");
    const QString testedAt = isoTime(*dateText);
    if (testedAt.isEmpty())
        return refused(QString("its date \"%1\" is in another language or form; an English "
                               "system writes \"Sat Nov 21 07:59:55 2026\"")
                           .arg(*dateText));
    return StationLog{*serialText, testedAt, *marks};
}
