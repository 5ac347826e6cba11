// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"

#include "app/outbox.h"
#include "demo/panelrun.h"
#include "yield/commands/command.h"
#include "yield/intake/collector.h"
#include "yield/page/page.h"
#include "yield/store/database.h"

#include <QDir>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace
{
constexpr int workingDays = 10;

enum class Course { Whole, Aborted, FalseFailure };

/// One test of one unit.
struct Test {
    QString serial;
    int station = 0;
    UnitFault unit = {};
    Course course = Course::Whole;
};

/// What the operator does when a test fails falsely: the fader is not moved to its end.
const UnitFault notMovedFar{Fault::NoHighEnd, 0};

/// Two weeks of working days, the last one last.
QVector<QDate> daysUpTo(const QDate& lastDay)
{
    QVector<QDate> days;
    for (QDate day = lastDay; days.size() < workingDays; day = day.addDays(-1))
        if (day.dayOfWeek() <= Qt::Friday)
            days.prepend(day);
    return days;
}

/// Clears the bands from a component on, as in a run that is aborted there.
void abortAt(int componentNum, testlog::Coverage& coverage)
{
    for (int c = componentNum; c <= roster::lastComponent; ++c)
        for (ComponentRange& range : coverage.at(static_cast<std::size_t>(c)))
            range.covered = 0;
}

class Line
{
public:
    /// The collectors make the outboxes.
    explicit Line(const QString& outputFolder)
        : folder(outputFolder + QStringLiteral("/simulated-line"))
    {
        QDir(folder).removeRecursively();
        for (int station = 0; station < stations.size(); ++station) {
            const auto& [name, isTarvekStation, faults, aborted, falseFailures] =
                stations.at(station);
            if (!QDir().mkpath(logsOf(station)))
                command::fail(QStringLiteral("the folder %1 cannot be made").arg(logsOf(station)));
            collectors.push_back(std::make_unique<Collector>(
                CollectRequest{database(), {name, isTarvekStation}, logsOf(station), {}}));
        }
        collectLogs();
    }

    void testUnits(int units, const QDate& lastDay)
    {
        deliverUnits(units);
        const QVector<QDate> days = daysUpTo(lastDay);
        for (int day = 0; day < days.size(); ++day)
            testUnitsOf(days.at(day), repairedUnits() + newUnits(days.size() - day));
    }

    void collectLogs()
    {
        for (const auto& collector : collectors)
            if (!collector->pass())
                command::fail(QStringLiteral("the logs in %1 cannot be collected").arg(folder));
    }

    QString database() const { return folder + QStringLiteral("/attempts.sqlite"); }

private:
    QString folderOf(int station) const
    {
        return folder + QLatin1Char('/') + stations.at(station).name;
    }
    QString logsOf(int station) const { return testlog::folder(folderOf(station)); }

    /// Spreads exactly as many faults as the rates say over the units of each station.
    void deliverUnits(int units)
    {
        constexpr int firstSerial = 4101;
        int serial = firstSerial;
        for (int station = 0; station < stations.size(); ++station) {
            const auto& rates = stations.at(station);
            const int count = linesimulation::unitsAt(station, units);
            const auto share = [count](double rate) { return qRound(rate * count); };
            QVector<Test> tests;
            for (const auto& fault : rates.faults)
                tests += QVector<Test>(share(fault.rate), {{}, station, fault.unit});
            tests += QVector<Test>(share(rates.aborted), {{}, station, {}, Course::Aborted});
            tests +=
                QVector<Test>(share(rates.falseFailures), {{}, station, {}, Course::FalseFailure});
            tests += QVector<Test>(count - tests.size(), {{}, station});
            std::shuffle(tests.begin(), tests.end(), random);
            for (Test& test : tests)
                test.serial = QString("0908-%1").arg(serial++, 6, 10, QLatin1Char('0'));
            undelivered.append(tests);
        }
    }

    /// Three in five come back each day, and one repair in five found nothing. One in three goes to
    /// any of the stations.
    QVector<Test> repairedUnits()
    {
        QVector<Test> repaired;
        QVector<Test> stillInRepair;
        for (Test& test : inRepair) {
            if (random() % 5 >= 3) {
                stillInRepair.append(test);
                continue;
            }
            if (random() % 5 != 0)
                test.unit = {};
            if (random() % 3 == 0)
                test.station = static_cast<int>(random() % 3);
            repaired.append(test);
        }
        inRepair = stillInRepair;
        return repaired;
    }

    /// About as many units each day.
    QVector<Test> newUnits(int daysLeft)
    {
        QVector<Test> tests;
        for (auto& units : undelivered) {
            const int share = units.size() / daysLeft + static_cast<int>(random() % 5) - 2;
            const int count = daysLeft == 1 ? units.size() : qBound(0, share, units.size());
            tests += units.mid(0, count);
            units.remove(0, count);
        }
        return tests;
    }

    void testUnitsOf(const QDate& day, const QVector<Test>& tests)
    {
        constexpr int minute = 60;
        constexpr int shiftSeconds = 8 * 60 * minute;
        const QDateTime begin(day, QTime(6, 30));
        for (int station = 0; station < stations.size(); ++station) {
            const QString serial = QString("KG-%1").arg(station + 1);
            run({serial, station}, begin.addSecs(-15 * minute));
            const auto isAtStation = [station](const Test& test) {
                return test.station == station;
            };
            const auto count =
                static_cast<int>(std::count_if(tests.cbegin(), tests.cend(), isAtStation));
            int seconds = 0;
            for (Test test : tests) {
                if (!isAtStation(test))
                    continue;
                const QDateTime end = begin.addSecs(seconds + static_cast<int>(random() % minute));
                seconds += shiftSeconds / count;
                run(test, end);
                if (test.unit.fault != Fault::None)
                    inRepair.append(test);
                if (std::exchange(test.course, Course::Whole) != Course::Whole)
                    run(test, end.addSecs(5 * minute));
            }
        }
    }

    /// A run that ends at that time, and its log.
    void run(const Test& test, const QDateTime& end)
    {
        constexpr int minSeconds = 150;
        const int seconds = minSeconds + static_cast<int>(random() % 90);
        const bool isTarvekStation = stations.at(test.station).isTarvekStation;
        const bool isFalseFailure = test.course == Course::FalseFailure;
        auto coverage =
            panels.coverageOf(isFalseFailure ? notMovedFar : test.unit, isTarvekStation);
        if (test.course == Course::Aborted)
            abortAt(linesimulation::abortedAt, coverage);
        const QStringList lines = testlog::lines(test.serial, end, coverage);
        OutboxWriter outbox(logsOf(test.station));
        outbox.startRun();
        outbox.add(lines, end.addSecs(-seconds), isTarvekStation);
        testlog::write(testlog::path(folderOf(test.station), test.serial), lines);
    }

    const QString folder;
    const QVector<linesimulation::LineStation> stations = linesimulation::stations();
    std::vector<std::unique_ptr<Collector>> collectors; ///< By station.
    PanelRun panels;
    std::mt19937 random{908};           // seeded: the same attempts each time
    QVector<QVector<Test>> undelivered; ///< By station.
    QVector<Test> inRepair;
};

void makeReport(const QString& path, const QString& location, const QDate& lastDay)
{
    ReportRequest request;
    request.now = QDateTime(lastDay.addDays(1), QTime(7, 0));
    request.exclude << linesimulation::knownGood;
    Database database(location, Database::Access::Read);
    command::writeFile(path, reportPage(readReport(database, request)));
}
} // namespace

QVector<linesimulation::LineStation> linesimulation::stations()
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

int linesimulation::unitsAt(int station, int units)
{
    const int count = stations().size();
    return units * (station + 1) / count - units * station / count;
}

void linesimulation::run(const QString& folder, int units, const QDate& lastDay)
{
    Line line(folder);
    line.testUnits(units, lastDay);
    line.collectLogs();
    makeReport(folder + QStringLiteral("/yield.html"), line.database(), lastDay);
}
