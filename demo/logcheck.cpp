// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/logcheck.h"

#include "panels/componentroster.h"
#include "panels/componentrange.h"

#include <QStringList>

namespace
{
constexpr int buttonBandCount = 2;

QVector<int> expectedBands(int componentNum, const UnitFault& unit, bool channelButtonTested)
{
    if (componentNum == roster::powerButton)
        return {};
    const bool isButton = roster::kindOf(componentNum) == roster::Kind::Button;
    const bool isTested = componentNum != roster::channelButton || channelButtonTested;
    QVector<int> bands(isButton ? buttonBandCount : positionBands().size());
    for (int band = 0; band < bands.size(); ++band)
        bands[band] = isTested && !unitfault::leavesUncovered(unit, componentNum, band) ? 1 : 0;
    return bands;
}

QString inWords(const QVector<int>& bands)
{
    QStringList words;
    for (const int band : bands)
        words << QString::number(band);
    return words.isEmpty() ? QStringLiteral("no bands") : words.join(QLatin1Char(' '));
}

/// The number between the two texts; nothing readable gives -1.
int numberBetween(const QByteArray& line, const QByteArray& before, const QByteArray& after)
{
    const int begin = line.indexOf(before) + before.size();
    const int end = after.isEmpty() ? line.size() : line.indexOf(after, begin);
    bool isNumber = false;
    const int number = line.mid(begin, end - begin).toInt(&isNumber);
    return isNumber ? number : -1;
}
} // namespace

QHash<int, QVector<int>> logcheck::readCoverage(const QByteArray& log)
{
    QHash<int, QVector<int>> coverage;
    int component = -1;
    for (const QByteArray& rawLine : log.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.contains("(Component ")) {
            component = numberBetween(line, "(Component ", ")");
            coverage.insert(component, {});
        } else if (line.startsWith("Range ")) {
            coverage[component].append(numberBetween(line, ": ", {}));
        }
    }
    return coverage;
}

QString logcheck::differences(const QByteArray& log, const UnitFault& unit,
                              bool channelButtonTested)
{
    const auto coverage = readCoverage(log);
    QStringList found;
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c) {
        const auto expected = expectedBands(c, unit, channelButtonTested);
        if (!coverage.contains(c))
            found << QStringLiteral("component %1 is missing").arg(c);
        else if (coverage[c] != expected)
            found << QStringLiteral("component %1 has %2, not %3")
                         .arg(QString::number(c), inWords(coverage[c]), inWords(expected));
    }
    if (!log.contains("NOT TESTED (Power Button)"))
        found << QStringLiteral("the power button is not marked as not tested");
    return found.join(QStringLiteral("; "));
}
