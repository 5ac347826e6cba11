// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/logs/stationlog.h"

#include <QDate>
#include <QTextCodec>
#include <QTime>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace
{
const QByteArray maker = QByteArrayLiteral("Norvane Instruments");
const QByteArray headBegin = maker + QByteArrayLiteral("\n\r\n\r\nZORVI\t#");
const QByteArray blockBegin = QByteArrayLiteral("\r\n\r\n---------------- ");
constexpr int longestSerial = 1000;

/// All that follows the head of a log has the same length in every log.
struct Body {
    QByteArray text; ///< With every mark 0.
    QByteArray mask; ///< The bits that are the same in every log: '0' and '1' differ in one.
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
        mask.fill('\xFF', text.size());
        for (const int mark : marks)
            mask[mark] = '\xFE';
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

/// Nothing if the bytes, as many as a body has, are no body.
std::optional<BandMarks> marksOf(const char* bytes)
{
    // Without a branch, so that the compiler compares many bytes at once: this is where the time
    // of an import would go.
    const Body& known = body();
    const int size = known.text.size();
    const char* const text = known.text.constData();
    const char* const mask = known.mask.constData();
    unsigned char difference = 0;
    for (int i = 0; i < size; ++i)
        difference = static_cast<unsigned char>(difference | ((bytes[i] ^ text[i]) & mask[i]));
    if (difference != 0)
        return std::nullopt;
    BandMarks marks;
    for (std::size_t i = 0; i < marks.size(); ++i)
        marks[i] = bytes[known.marks[i]] == '1';
    return marks;
}

/// What is wrong with bytes that do not end in the body of a log.
QString whatIsWrong(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return QStringLiteral("it is empty");
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") ||
        bytes.startsWith("\xEF\xBB\xBF"))
        return QStringLiteral("it has a foreign encoding: it begins with a byte order mark");
    if (headBegin.startsWith(bytes))
        return QStringLiteral("it is half a log: it ends before the serial");
    if (!bytes.startsWith(headBegin))
        return bytes.startsWith(maker)
                   ? QStringLiteral("its line ends are not those of the station")
                   : QStringLiteral("it is no log: its first line is not \"%1\"")
                         .arg(QString::fromLatin1(maker));
    const QByteArray& text = body().text;
    const int begin = bytes.indexOf('\n' + blockBegin + "FADER: 0 ") + 1;
    if (begin == 0)
        return QStringLiteral("it is half a log: it ends before component 0");
    for (int i = 0; i < text.size(); ++i) {
        const int c = body().componentAt(i);
        if (begin + i >= bytes.size())
            return QStringLiteral("it is half a log: it ends in component %1").arg(c);
        const bool isMark = std::binary_search(body().marks.begin(), body().marks.end(), i);
        if (bytes[begin + i] != text[i] && (!isMark || bytes[begin + i] != '1'))
            return QStringLiteral("its component %1 is not as the station writes it").arg(c);
    }
    return QStringLiteral("it goes on after its last component");
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

/// A name's number among the short names of an English system, from 1; 0 if it is none.
int numberOf(const char* name, const char* names)
{
    const char* const found = std::strlen(name) == 3 ? std::strstr(names, name) : nullptr;
    return found != nullptr && (found - names) % 3 == 0 ? static_cast<int>(found - names) / 3 + 1
                                                        : 0;
}

/// "Sat Nov 21 07:59:55 2026" as 2026-11-21T07:59:55; empty if it is not of this form.
QString isoTime(const QByteArray& date)
{
    std::array<char, 4> weekday{};
    std::array<char, 4> monthName{};
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int year = 0;
    std::sscanf(date.constData(), "%3s %3s %d %d:%d:%d %d", weekday.data(), monthName.data(), &day,
                &hour, &minute, &second, &year);
    const int month = numberOf(monthName.data(), "JanFebMarAprMayJunJulAugSepOctNovDec");
    const QDate whole(year, month, day);
    if (!whole.isValid() || !QTime::isValid(hour, minute, second) || year > 9999 ||
        whole.dayOfWeek() != numberOf(weekday.data(), "MonTueWedThuFriSatSun"))
        return {};
    // Written again, because the reading forgives blanks, signs and missing zeros.
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s %s %d %02d:%02d:%02d %d", weekday.data(),
                  monthName.data(), day, hour, minute, second, year);
    if (date != text.data())
        return {};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour,
                  minute, second);
    return QString::fromLatin1(text.data());
}
} // namespace

std::optional<StationLog> stationlog::read(const QByteArray& bytes, QString& reason)
{
    const auto refused = [&](const QString& why) {
        reason = why;
        return std::nullopt;
    };
    if (bytes.size() > longestLog)
        return refused(QStringLiteral("it is too long for a log"));
    const int headSize = bytes.size() - body().text.size();
    const auto marks =
        headSize > headBegin.size() && bytes.startsWith(headBegin) && bytes[headSize - 1] == '\n'
            ? marksOf(bytes.constData() + headSize)
            : std::nullopt;
    if (!marks)
        return refused(whatIsWrong(bytes));

    // The serial may hold any character, so the last tab ends it.
    const int tab = bytes.lastIndexOf('\t', headSize - 1);
    if (tab < headBegin.size())
        return refused(QStringLiteral("it has no date after the serial"));
    const QByteArray serial = bytes.mid(headBegin.size(), tab - headBegin.size());
    const QByteArray date = bytes.mid(tab + 1, headSize - 1 - (tab + 1));
    const auto serialText = fromUtf8(serial);
    const auto dateText = fromUtf8(date);
    if (!serialText || !dateText)
        return refused(QStringLiteral("it has a foreign encoding: its head is not UTF-8"));
    if (serial.contains('\0'))
        return refused(QStringLiteral("its serial holds a NUL, which no serial can"));
    if (serial.size() > longestSerial)
        return refused(QStringLiteral("its serial is longer than a file name can be"));
    const QString testedAt = isoTime(date);
    if (testedAt.isEmpty())
        return refused(QStringLiteral("its date \"%1\" is in another language or form; an English "
                                      "system writes \"Sat Nov 21 07:59:55 2026\"")
                           .arg(*dateText));
    return StationLog{*serialText, testedAt, *marks};
}
