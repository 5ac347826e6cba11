// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"
#include "tests/yield/postgresserver.h"
#include "tests/yield/unitlogs.h"
#include "yield/commands/reportfile.h"
#include "yield/figures/report.h"
#include "yield/figures/timeline.h"
#include "yield/logs/controlnames.h"
#include "yield/page/figuretext.h"
#include "yield/page/page.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"

#include <QBuffer>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace
{
const QString hostileSerial =
    QStringLiteral("</td><script>console.log('run')</script>&amp;\"\u202e\x01\uffff😀");

/// A unit is named by its serial; minutes count from noon of 21 Nov 2026.
bool store(Database& database, const QString& station, bool tests18, const QString& serial,
           int minutes, const BandMarks& marks)
{
    return attemptstore::store(database, {station, tests18},
                               {unitlogs::log(serial, minutes, marks)})
               .added == 1;
}

QString inWords(const Tally& tally)
{
    return QStringLiteral("%1 units, %2 attempts, %3 at first, %4 at last")
        .arg(tally.units)
        .arg(tally.attempts)
        .arg(tally.passedFirst)
        .arg(tally.passedLast);
}

ControlMisses control(const Report& report, int component)
{
    return report.controls.at(static_cast<std::size_t>(component));
}

QString elementText(const QString& html, const QString& id)
{
    const int begin = html.indexOf(QStringLiteral("id=\"%1\"").arg(id));
    return html.mid(begin, html.indexOf(QStringLiteral("</section>"), begin) - begin);
}
} // namespace

class TestReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFortnightsRatesComeOut();
    void whatCounts_data();
    void whatCounts();
    void longTimesAreWeeksOrMonths();
    void wordsAndFigures();
};

void TestReport::theFortnightsRatesComeOut()
{
    constexpr int units = 330;
    const QTemporaryDir folder;
    const QDate lastDay(2026, 11, 20);
    QString problem;
    QVERIFY2(fortnight::make(folder.path(), units, lastDay, problem), qPrintable(problem));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("yield.html"))));
    Database database(folder.filePath(QStringLiteral("fortnight/attempts.sqlite")),
                      Database::Access::Read);
    const Report report = readReport(database, {});

    std::array<int, roster::componentCount> missed{};
    int faulty = 0;
    const auto line = fortnight::line();
    QCOMPARE(report.stations.size(), line.size());
    for (int s = 0; s < line.size(); ++s) {
        const int unitsHere = fortnight::unitsAt(s, units);
        int faultyHere = 0;
        for (const auto& [unit, rate] : line.at(s).faults) {
            const int with = qRound(rate * unitsHere);
            faultyHere += with;
            missed.at(static_cast<std::size_t>(unit.componentNum)) += with;
            if (unit.fault == Fault::Swapped)
                missed.at(static_cast<std::size_t>(unit.componentNum) + 1) += with;
        }
        QCOMPARE(report.stations.at(s).tally.units, unitsHere);
        QCOMPARE(report.stations.at(s).tally.passedFirst, unitsHere - faultyHere);
        faulty += faultyHere;
    }
    QVERIFY(faulty > 20);
    QCOMPARE(report.total.units, units);
    QCOMPARE(report.total.passedFirst, units - faulty);
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        QCOMPARE(control(report, c).missed, missed.at(static_cast<std::size_t>(c)));
    // Fader 3 never reaches its upper end, fader 6 never its lower one.
    QCOMPARE(control(report, 3).missedBands.last(), control(report, 3).missed);
    QCOMPARE(control(report, 3).missedBands.first(), 0);
    QCOMPARE(control(report, 6).missedBands.first(), control(report, 6).missed);
    QCOMPARE(control(report, roster::channelButton).units, fortnight::unitsAt(2, units));
    QCOMPARE(report.days.lastKey(), lastDay);
    QCOMPARE(report.days.size(), 10);
    QCOMPARE(report.openUnits.size(), units - report.total.passedLast);
    QVERIFY(report.repeatedUnitCount + report.openUnits.size() >= faulty);
}

void TestReport::whatCounts_data()
{
    QTest::addColumn<bool>("onServer");
    QTest::newRow("SQLite") << false;
    QTest::newRow("PostgreSQL") << true;
}

void TestReport::whatCounts()
{
    QFETCH(bool, onServer);
    PostgresServer server;
    const QTemporaryDir folder;
    QString location = folder.filePath(QStringLiteral("a.sqlite"));
    if (onServer) {
        const QString problem = server.create();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        location = server.location();
    }
    Database database(location, Database::Access::Write);

    Report report;
    const auto read = [&](const ReportRequest& request) {
        report = readReport(database, request);
        return true;
    };
    QVERIFY(read({}) && report.databaseIsEmpty && report.total.units == 0);
    QBuffer page;
    page.open(QIODevice::WriteOnly);
    QVERIFY(page::write(report, page) && page.data().contains("There are no attempts in the"));
    QVERIFY(read({{}, {}, QStringLiteral("one")}) && report.databaseIsEmpty);

    constexpr int day = 24 * 60;
    const BandMarks whole = unitlogs::whole();
    const QString one = QStringLiteral("one");
    const QString two = QStringLiteral("two");
    // Good at once; repaired and good at the other station; good and then broken; never good.
    QVERIFY(store(database, one, false, "good", 0, whole));
    QVERIFY(
        store(database, one, false, "repaired", 1, unitlogs::allBut({{3, 12}, {18, 0}, {18, 1}})));
    QVERIFY(store(database, two, true, "repaired", 2 * day, ~BandMarks()));
    QVERIFY(store(database, two, true, "broken", day, ~BandMarks()));
    QVERIFY(store(database, one, false, "broken", day + 1,
                  unitlogs::allBut({{0, 5}, {18, 0}, {18, 1}})));
    QVERIFY(
        store(database, two, true, "never", day + 2, unitlogs::allBut({{3, 0}, {3, 12}, {18, 1}})));
    QVERIFY(store(database, two, true, "never", day + 3, unitlogs::allBut({{3, 0}, {3, 1}})));
    QVERIFY(store(database, two, true, "never", day + 4, unitlogs::allBut({{3, 0}, {9, 1}})));

    QVERIFY(read({}));
    QCOMPARE(inWords(report.total), QStringLiteral("4 units, 8 attempts, 2 at first, 2 at last"));
    QCOMPARE(inWords(report.days.first()),
             QStringLiteral("2 units, 3 attempts, 1 at first, 2 at last"));
    QCOMPARE(inWords(report.stations.last().tally),
             QStringLiteral("2 units, 5 attempts, 1 at first, 0 at last"));
    const ControlMisses fader3 = control(report, 3);
    QCOMPARE(fader3.missed, 2);
    QCOMPARE(fader3.missedBands, (QVector<int>{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}));
    QCOMPARE(fader3.units, 4);
    QCOMPARE(control(report, 18).missed, 1);
    QCOMPARE(control(report, 18).units, 2);
    QCOMPARE(control(report, 39).units, 0);
    QCOMPARE(control(report, 0).missed, 0); // missed at a second attempt only
    QCOMPARE(report.openUnits.size(), 2);
    QCOMPARE(report.openUnits.first().serial, QStringLiteral("never"));
    QCOMPARE(report.openUnits.first().attempts, 3);
    QCOMPARE(report.openUnits.first().missedControlCount, 2);
    QCOMPARE(report.openUnits.first().missed.last().componentNum, 9);
    QCOMPARE(report.openUnits.last().lastStation, one);
    QCOMPARE(report.repeatedUnitCount, 3);
    QCOMPARE(report.repeatedUnits.first().serial, QStringLiteral("never"));
    QVERIFY(report.repeatedUnits.at(1).lastResult == Result::Passed &&
            report.repeatedUnits.at(1).firstResult == Result::Failed);

    // The first attempt decides; what came later counts all the same.
    const QDate first(2026, 11, 21);
    QVERIFY(read({{}, first, {}}));
    QCOMPARE(inWords(report.total), QStringLiteral("2 units, 3 attempts, 1 at first, 2 at last"));
    QVERIFY(report.openUnits.isEmpty());
    QVERIFY(read({first.addDays(1), first.addDays(1), two}));
    QCOMPARE(inWords(report.total), QStringLiteral("2 units, 5 attempts, 1 at first, 0 at last"));
    QVERIFY(read({first, {}, one}));
    QCOMPARE(inWords(report.total), QStringLiteral("2 units, 3 attempts, 1 at first, 2 at last"));
    QVERIFY(read({first.addDays(2), {}, {}}) && !report.databaseIsEmpty && report.days.isEmpty());
    QCOMPARE(report.total.units, 0);
}

void TestReport::longTimesAreWeeksOrMonths()
{
    QMap<QDate, Tally> days;
    const QDate begin(2025, 12, 31); // a Wednesday
    for (int day = 0; day < 70; ++day)
        days[begin.addDays(day)] = {1, 1, 1, 1, 0};
    QCOMPARE(timelineOf(days, Tally()).length, 70);
    days[begin.addDays(70)] = {1, 1, 1, 1, 0};
    const Timeline weeks = timelineOf(days, Tally());
    QCOMPARE(weeks.unit, QStringLiteral("week"));
    QCOMPARE(weeks.periods.first().tally.units, 5);
    QCOMPARE(weeks.periods.at(1).name, QStringLiteral("Week of 5 Jan 2026"));
    days[begin.addYears(2)] = {1, 1, 1, 1, 0};
    const Timeline months = timelineOf(days, Tally());
    QCOMPARE(months.length, 25);
    QCOMPARE(months.periods.size(), 5); // the months without units leave their places empty
    QCOMPARE(months.periods.at(1).tally.units, 31);
}

void TestReport::wordsAndFigures()
{
    QCOMPARE(figuretext::percent(99999, 100000), QStringLiteral("99.9\u00a0%"));
    QCOMPARE(figuretext::percent(1, 100000), QStringLiteral("0.1\u00a0%"));
    QCOMPARE(figuretext::share(1234, 1234), QStringLiteral("100\u00a0% (1,234 of 1,234)"));
    QCOMPARE(figuretext::percent(0, 0), QStringLiteral("–"));
    QCOMPARE(controlnames::control(18), QStringLiteral("Button 9"));
    QCOMPARE(controlnames::bands(3, {0, 1, 5, 11, 12}),
             QStringLiteral("0 to 19, 50 to 59, 110 to 127"));
    QCOMPARE(controlnames::bands(9, {1}), QStringLiteral("pressed"));
    QCOMPARE(controlnames::bands(9, {0, 1}), QStringLiteral("all"));
}

QTEST_MAIN(TestReport)
#include "test_report.moc"
