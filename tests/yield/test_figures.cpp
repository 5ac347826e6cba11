// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/reportfile.h"
#include "yield/figures/reportcounter.h"
#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace
{
QDateTime now()
{
    return {QDate(2026, 11, 21), QTime(15, 0)};
}

constexpr int plants = 16;

/// What the model prints.
QByteArray model(const QStringList& arguments)
{
    QProcess python;
    python.start(QString("/usr/bin/python3"), QStringList{YIELD_MODEL} + arguments);
    constexpr int longestMs = 120000;
    python.waitForFinished(longestMs);
    const QByteArray errors = python.readAllStandardError();
    if (!errors.isEmpty())
        qWarning().noquote() << errors;
    return python.readAllStandardOutput();
}

/// Stores the plant's logs as they come, in a few parts.
void store(Database& database, const QJsonObject& plant)
{
    constexpr int parts = 3;
    const QJsonArray logs = plant["logs"].toArray();
    for (int part = 0; part < parts; ++part) {
        QMap<QString, std::vector<StationLog>> byStation;
        for (int i = logs.size() * part / parts; i < logs.size() * (part + 1) / parts; ++i) {
            const QJsonArray log = logs[i].toArray();
            byStation[log[0].toString()].push_back(
                {log[1].toString(), log[2].toString(), BandMarks(log[3].toString().toStdString())});
        }
        const QJsonObject declared = plant["declared"].toObject();
        for (auto station = byStation.cbegin(); station != byStation.cend(); ++station)
            attemptstore::store(database, {station.key(), declared[station.key()].toBool()},
                                station.value());
    }
}

ReportRequest requestOf(const QJsonObject& request)
{
    ReportRequest asked;
    asked.since = QDate::fromString(request["since"].toString(), Qt::ISODate);
    asked.until = QDate::fromString(request["until"].toString(), Qt::ISODate);
    asked.station = request["station"].toString();
    for (const QJsonValue pattern : request["without"].toArray())
        asked.without << pattern.toString();
    asked.now = now();
    return asked;
}

Attempt attempt(const QString& serial, int minutes, const BandMarks& marks)
{
    return {QString("one"), true, serial, now().addSecs(60 * minutes).toString(Qt::ISODate), marks};
}
} // namespace

class TestFigures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Random plants: each table and picture of their pages.
    void pages()
    {
        const QStringList arguments{"908", QString::number(plants)};
        const QJsonObject made = QJsonDocument::fromJson(model(arguments)).object();
        QCOMPARE(made["now"].toString(), now().toString(Qt::ISODate));
        const QTemporaryDir folder;
        int pages = 0;
        for (int p = 0; p < plants; ++p) {
            const QJsonObject plant = made["plants"].toArray().at(p).toObject();
            Database database(folder.filePath(QString("%1.sqlite").arg(p)),
                              Database::Access::Write);
            store(database, plant);
            const QJsonArray requests = plant["requests"].toArray();
            for (int r = 0; r < requests.size(); ++r, ++pages) {
                QFile page(folder.filePath(QString("%1-%2.html").arg(p).arg(r)));
                QVERIFY(page.open(QIODevice::WriteOnly));
                QVERIFY(writeReport(database, requestOf(requests.at(r).toObject()), page));
            }
        }
        const QByteArray found = model(arguments + QStringList{folder.path()});
        QVERIFY2(!found.contains("page "), found);
        QCOMPARE(found.count("CHECKED"), pages);
        for (const QJsonValue value : made["limits"].toArray()) {
            const QJsonArray row = value.toArray();
            const Limits limits =
                limitsOf(row[0].toInt(), {row[2].toInt(), 0, row[1].toInt(), 0, 0});
            QCOMPARE(QJsonArray({limits.low, limits.high}), QJsonArray({row[3], row[4]}));
        }
    }

    /// The lists end where they are of no more use; what is counted goes on.
    void longLists()
    {
        constexpr int units = 30000;
        ReportRequest request;
        request.now = now();
        ReportCounter counter(request);
        const BandMarks marks = ~BandMarks() >> 1; // misses the last band
        for (int i = 0; i < units; ++i) {
            const QString serial = QString::number(units + i);
            counter.add(attempt(serial, i % 1000 - 2000, marks));
            for (int again = 0; again < i % 3; ++again)
                counter.add(attempt(serial, i + again, marks));
        }
        const Report report = counter.finish();
        QCOMPARE(report.total.attempts, 2 * units);
        QCOMPARE(report.openUnits.size(), Report::maxOpenUnits);
        QCOMPARE(report.openUnits.first().last.serial, QString("59999"));
        QCOMPARE(report.repeatedUnitCount, units / 3 * 2);
        QCOMPARE(report.repeatedUnits.size(), Report::maxRepeatedUnits);
        QCOMPARE(report.repeatedUnits.first().last.serial, QString("59999"));
        QCOMPARE(report.repeatedUnits.last().attempts, 3);
    }

    void longTimesAreWeeksOrMonths_data()
    {
        QTest::addColumn<int>("days");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<int>("length");
        QTest::newRow("70 days") << 69 << "day" << 70;
        QTest::newRow("71 days") << 70 << "week" << 11;
        QTest::newRow("490 days") << 489 << "week" << 71;
        QTest::newRow("491 days") << 490 << "month" << 18;
    }

    void longTimesAreWeeksOrMonths()
    {
        QFETCH(int, days);
        const QDate begin(2025, 12, 31); // a Wednesday
        const Timeline timeline = timelineOf({{begin, Tally()}, {begin.addDays(days), Tally()}});
        QTEST(timeline.unit, "unit");
        QTEST(timeline.length, "length");
    }

    void names()
    {
        const std::vector<bandmarks::Band> missed = {{3, 0},  {3, 1},  {3, 5},  {3, 11},
                                                     {3, 12}, {18, 1}, {19, 0}, {19, 1}};
        QCOMPARE(controlnames::missed(missed),
                 QStringList({"Fader 3: 0 to 19, 50 to 59, 110 to 127", "Button 9: pressed",
                              "Button 10: all"}));
    }
};

QTEST_GUILESS_MAIN(TestFigures)
#include "test_figures.moc"
