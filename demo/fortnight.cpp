// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"

#include "demo/panelrun.h"
#include "yield/commands/command.h"
#include "yield/intake/logimport.h"
#include "yield/logs/logfiles.h"
#include "yield/page/page.h"
#include "yield/store/database.h"
#include "yield/store/schema.h"

#include <QDir>
#include <QSaveFile>

#include <algorithm>
#include <random>
#include <utility>

namespace
{
constexpr int workingDays = 10;

/// One test of one unit.
struct Test {
    QString serial;
    int station;
    UnitFault unit;
    enum class Course { Whole, BrokenOff, FalseFailure } course = Course::Whole;
};

/// What the operator does when a test fails falsely: the fader is not moved to its end.
const UnitFault notMovedFar{Fault::NoHighEnd, 0};

/// Two weeks of working days, the last one first.
QVector<QDate> daysUpTo(const QDate& lastDay)
{
    QVector<QDate> days;
    for (QDate day = lastDay; days.size() < workingDays; day = day.addDays(-1))
        if (day.dayOfWeek() <= Qt::Friday)
            days.prepend(day);
    return days;
}

class Line
{
public:
    Line(const QString& outputFolder, int unitCount)
        : folder(outputFolder)
        , units(unitCount)
    {
    }

    bool work(const QDate& lastDay)
    {
        if (!prepareFolder())
            return false;
        deliverUnits();
        const QVector<QDate> days = daysUpTo(lastDay);
        for (int day = 0; day < days.size(); ++day)
            if (!workADay(days.at(day), backFromRepair() + arrivals(days.size() - day)))
                return false;
        return makePage(lastDay);
    }

    QString problem;

private:
    QString leftFolder() const { return folder + QStringLiteral("/fortnight"); }
    QString folderOf(int station) const
    {
        return leftFolder() + QLatin1Char('/') + stations.at(station).name;
    }
    QString database() const { return leftFolder() + QStringLiteral("/attempts.sqlite"); }

    bool prepareFolder()
    {
        QDir(leftFolder()).removeRecursively();
        for (int station = 0; station < stations.size(); ++station)
            if (!QDir().mkpath(folderOf(station) + QStringLiteral("/Logs"))) {
                problem = QStringLiteral("the folder %1 cannot be made").arg(folderOf(station));
                return false;
            }
        return true;
    }

    /// Spreads exactly as many faults as the rates say over the units of each station.
    void deliverUnits()
    {
        constexpr int firstSerial = 4101;
        int serial = firstSerial;
        for (int station = 0; station < stations.size(); ++station) {
            const auto& rates = stations.at(station);
            const int all = fortnight::unitsAt(station, units);
            QVector<Test> tests;
            const auto add = [&](double rate, const UnitFault& unit, Test::Course course) {
                for (int i = fortnight::unitsWith(rate, all); i > 0; --i)
                    tests.append({{}, station, unit, course});
            };
            for (const auto& fault : rates.faults)
                add(fault.rate, fault.unit, Test::Course::Whole);
            add(rates.brokenOff, {}, Test::Course::BrokenOff);
            add(rates.falseFailures, {}, Test::Course::FalseFailure);
            while (tests.size() < all)
                tests.append({{}, station, {}});
            std::shuffle(tests.begin(), tests.end(), random);
            for (Test& test : tests)
                test.serial = QString("0908-%1").arg(serial++, 6, 10, QLatin1Char('0'));
            arriving.append(tests);
        }
    }

    /// Three in five come back each day, and one repair in five found nothing; any station may test
    /// the unit again.
    QVector<Test> backFromRepair()
    {
        QVector<Test> back;
        QVector<Test> staying;
        for (Test test : std::as_const(inRepair)) {
            const bool isBack = random() % 5 < 3;
            if (isBack && random() % 5 != 0)
                test.unit = {};
            if (isBack && random() % 3 == 0)
                test.station = static_cast<int>(random() % 3);
            (isBack ? back : staying).append(test);
        }
        inRepair = staying;
        return back;
    }

    /// About as many units each day.
    QVector<Test> arrivals(int daysLeft)
    {
        QVector<Test> tests;
        for (auto& coming : arriving) {
            const int share = coming.size() / daysLeft + static_cast<int>(random() % 5) - 2;
            const int count = daysLeft == 1 ? coming.size() : qBound(0, share, coming.size());
            tests += coming.mid(0, count);
            coming.remove(0, count);
        }
        return tests;
    }

    bool workADay(const QDate& day, const QVector<Test>& tests)
    {
        constexpr int shiftSeconds = 8 * 3600;
        constexpr int knownGoodSeconds = -15 * 60; // before the shift
        const QDateTime begin(day, QTime(6, 30));
        for (int station = 0; station < stations.size(); ++station)
            run({QString("KG-%1").arg(station + 1), station, {}}, begin.addSecs(knownGoodSeconds));
        QVector<int> tested(stations.size());
        QVector<std::pair<Test, QDateTime>> again;
        for (const Test& test : tests) {
            const auto atStation = [&](const Test& other) { return other.station == test.station; };
            const auto all = std::count_if(tests.cbegin(), tests.cend(), atStation);
            const auto pitch = shiftSeconds / std::max(1, static_cast<int>(all));
            const int seconds = pitch * tested[test.station]++ + static_cast<int>(random() % 60);
            const QDateTime when = begin.addSecs(seconds);
            run(test, when);
            if (test.unit.fault != Fault::None)
                inRepair.append(test);
            if (test.course != Test::Course::Whole)
                again.append({test, when.addSecs(secondsUntilAgain(test.course))});
        }
        // Before the second test of a unit overwrites its log.
        if (!importLogs())
            return false;
        for (auto& [test, when] : again) {
            test.course = Test::Course::Whole;
            run(test, when);
        }
        return importLogs();
    }

    /// Sooner, a run that was broken off could not be told from one that was saved in its middle.
    static int secondsUntilAgain(Test::Course course)
    {
        constexpr int minute = 60;
        return (course == Test::Course::FalseFailure ? 5 : 50) * minute;
    }

    void run(const Test& test, const QDateTime& when)
    {
        const bool isFalse = test.course == Test::Course::FalseFailure;
        auto coverage =
            panels.coverageOf(isFalse ? notMovedFar : test.unit, stations.at(test.station).tests18);
        if (test.course == Test::Course::BrokenOff)
            for (int c = fortnight::brokenOffAt; c <= roster::lastComponent; ++c)
                for (ComponentRange& range : coverage.at(static_cast<std::size_t>(c)))
                    range.covered = 0;
        testlog::write(testlog::path(folderOf(test.station), test.serial),
                       testlog::lines(test.serial, when, coverage));
    }

    bool importLogs()
    {
        Database attempts(database(), Database::Access::Write);
        schema::migrate(attempts);
        int problems = 0;
        for (int station = 0; station < stations.size(); ++station)
            logimport::store(attempts, {stations.at(station).name, stations.at(station).tests18},
                             logfiles::filesOf(folderOf(station) + QStringLiteral("/Logs")),
                             [&problems](const logimport::Batch& batch) {
                                 problems += logimport::printProblems(batch);
                             });
        return problems == 0;
    }

    bool makePage(const QDate& lastDay)
    {
        ReportRequest request;
        request.now = QDateTime(lastDay.addDays(1), QTime(7, 0));
        request.exclude << fortnight::knownGood;
        Database attempts(database(), Database::Access::Read);
        QSaveFile page(folder + QStringLiteral("/yield.html"));
        if (page.open(QIODevice::WriteOnly))
            page.write(reportPage(readReport(attempts, request)));
        if (!page.commit())
            problem = QStringLiteral("%1: %2").arg(page.fileName(), page.errorString());
        return problem.isEmpty();
    }

    const QString folder;
    const int units;
    const QVector<fortnight::LineStation> stations = fortnight::line();
    PanelRun panels;
    std::mt19937 random{908}; // seeded: the same fortnight each time
    QVector<QVector<Test>> arriving;
    QVector<Test> inRepair;
};
} // namespace

QVector<fortnight::LineStation> fortnight::line()
{
    const FaultRate shortFader{{Fault::NoHighEnd, 3}, 0.03};
    const FaultRate weakButton{{Fault::WeakButton, 11}, 0.02};
    const FaultRate deadRotary{{Fault::Stuck, 41}, 0.01};
    const FaultRate swappedButtons{{Fault::Swapped, 25}, 0.01};
    const FaultRate lowFader{{Fault::NoLowEnd, 6}, 0.05};
    const FaultRate deadChannelButton{{Fault::Stuck, roster::channelButton}, 0.02};
    return {
        {"Station 1", false, {shortFader, weakButton, deadRotary}, 0.02, 0.02},
        {"Station 2", false, {shortFader, weakButton, swappedButtons}, 0.01, 0.04},
        {"Station 3", true, {shortFader, weakButton, lowFader, deadChannelButton}, 0.02, 0.01},
    };
}

int fortnight::unitsAt(int station, int units)
{
    const int stations = line().size();
    return units * (station + 1) / stations - units * station / stations;
}

int fortnight::unitsWith(double rate, int unitsAtStation)
{
    return qRound(rate * unitsAtStation);
}

bool fortnight::make(const QString& folder, int units, const QDate& lastDay, QString& problem)
{
    Line line(folder, units);
    try {
        const bool isMade = line.work(lastDay);
        problem = line.problem;
        return isMade;
    } catch (const DatabaseError& error) {
        problem = error.text();
        return false;
    }
}
