// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"

#include "demo/panelrun.h"
#include "yield/commands/reportfile.h"
#include "yield/intake/logimport.h"
#include "yield/store/database.h"

#include <QDir>
#include <QSaveFile>
#include <QTextStream>

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
};

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
        return makePage();
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
            QVector<Test> tests;
            for (const auto& fault : stations.at(station).faults)
                for (int i = fortnight::unitsWith(fault, fortnight::unitsAt(station, units)); i > 0;
                     --i)
                    tests.append({{}, station, fault.unit});
            while (tests.size() < fortnight::unitsAt(station, units))
                tests.append({{}, station, {}});
            std::shuffle(tests.begin(), tests.end(), random);
            for (Test& test : tests)
                test.serial = QStringLiteral("0908-%1").arg(serial++, 6, 10, QLatin1Char('0'));
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
        const QDateTime begin(day, QTime(6, 30));
        QVector<int> tested(stations.size());
        for (const Test& test : tests) {
            const auto atStation = [&](const Test& other) { return other.station == test.station; };
            const auto all = std::count_if(tests.cbegin(), tests.cend(), atStation);
            const auto pitch = shiftSeconds / std::max(1, static_cast<int>(all));
            const int seconds = pitch * tested[test.station]++ + static_cast<int>(random() % 60);
            const auto& station = stations.at(test.station);
            testlog::write(testlog::path(folderOf(test.station), test.serial),
                           testlog::lines(test.serial, begin.addSecs(seconds),
                                          panels.coverageOf(test.unit, station.tests18)));
            if (test.unit.fault != Fault::None)
                inRepair.append(test);
        }
        return importLogs();
    }

    /// At the end of each day, before a second test of a unit overwrites its log.
    bool importLogs()
    {
        for (int station = 0; station < stations.size(); ++station) {
            QString out;
            QTextStream outStream(&out);
            QTextStream problemStream(&problem);
            if (logimport::run({database(),
                                {stations.at(station).name, stations.at(station).tests18},
                                {folderOf(station) + QStringLiteral("/Logs")}},
                               outStream, problemStream) != 0)
                return false;
        }
        return true;
    }

    bool makePage()
    {
        Database attempts(database(), Database::Access::Read);
        QSaveFile page(folder + QStringLiteral("/yield.html"));
        if (page.open(QIODevice::WriteOnly) && !writeReport(attempts, {}, page))
            page.cancelWriting();
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
        {QStringLiteral("Station 1"), false, {shortFader, weakButton, deadRotary}},
        {QStringLiteral("Station 2"), false, {shortFader, weakButton, swappedButtons}},
        {QStringLiteral("Station 3"), true, {shortFader, weakButton, lowFader, deadChannelButton}},
    };
}

int fortnight::unitsAt(int station, int units)
{
    const int stations = line().size();
    return units * (station + 1) / stations - units * station / stations;
}

int fortnight::unitsWith(const FaultRate& fault, int unitsAtStation)
{
    return qRound(fault.rate * unitsAtStation);
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
