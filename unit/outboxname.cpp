// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "unit/outboxname.h"

#include <QDateTime>
#include <QRegularExpression>

namespace
{
/// As UTC: each time of a wall clock exists there, also one that a change of the clocks leaves out.
/// Not by Qt's parser for a format, which asks for the time zone eighty times.
QDateTime startOf(const QString& run)
{
    const auto number = [&run](int begin, int size) { return run.midRef(begin, size).toInt(); };
    return {QDate(number(0, 4), number(4, 2), number(6, 2)),
            QTime(number(9, 2), number(11, 2), number(13, 2), number(16, 3)), Qt::UTC};
}
} // namespace

QString OutboxName::fileName() const
{
    return QString("%1-%2%3.txt").arg(run).arg(save).arg(isTarvek ? "-TARVEK" : "");
}

QString OutboxName::startedAt() const
{
    return startOf(run).toString("yyyy-MM-dd'T'HH:mm:ss.zzz");
}

std::optional<OutboxName> OutboxName::read(const QString& fileName)
{
    static const QRegularExpression form(
        R"(\A([0-9]{8}T[0-9]{6}\.[0-9]{3}-[0-9a-f]{16})-([1-9][0-9]{0,8})(-TARVEK)?\.txt\z)");
    const auto match = form.match(fileName);
    if (!match.hasMatch() || !startOf(match.captured(1)).isValid())
        return std::nullopt;
    return OutboxName{match.captured(1), match.captured(2).toInt(), !match.captured(3).isEmpty()};
}
