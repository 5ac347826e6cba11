// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/schema.h"

#include <QTest>

#include <algorithm>
#include <numeric>

using testdatabase::errorOf;
using unitlogs::abortedAt;
using unitlogs::log;
using unitlogs::passed;
using unitlogs::passedWith18;
using unitlogs::without;

namespace
{
/// A log as it comes from a station.
struct Fact {
    Station station;
    LogFile file;
};

Fact imported(const QString& station, const StationLog& log)
{
    return {{station}, {log}};
}

OutboxName nameOf(int run, int save, bool isTarvek = false)
{
    return {QString("20261121T115900.000-%1").arg(run, 16, 16, QChar('0')), save, isTarvek};
}

Fact saved(const QString& station, const OutboxName& name, const StationLog& log)
{
    return {{station}, {log, name}};
}

/// An import without a log, with the option --tests-component-18.
Fact tests18(const QString& station)
{
    return {{station, true}, {log("", 0, {})}};
}

StoreCounts store(Database& database, const Fact& fact)
{
    StoreCounts counts;
    attemptstore::store(database, fact.station, {fact.file}, counts);
    return counts;
}

const StationLog begun = log("x", 0, without(abortedAt(20), 3, 5));
const StationLog whole = log("y", 5, passed());
const StationLog own = log("z", 9, passed());
// A run that was saved twice.
const Fact save1 = saved("S", nameOf(1, 1), begun);
const Fact save2 = saved("S", nameOf(1, 2), whole);
} // namespace

using Facts = std::vector<Fact>;
Q_DECLARE_METATYPE(Facts)

/// Each test with an empty database of both kinds.
class TestStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("isServer");
        QTest::newRow("SQLite") << false;
        QTest::newRow("PostgreSQL") << true;
    }

    void initTestCase() { QCOMPARE(server.create(), QString()); }

    void init()
    {
        database = testdatabase::empty(isServer() ? &server : nullptr);
        schema::migrate(*database);
    }

    void anyOrder_data()
    {
        QTest::addColumn<Facts>("facts");
        QTest::addColumn<QStringList>("rows");
        const QStringList run{"S: x at 12:00, repeated, save 1 of run 1",
                              "S: y at 12:05, passed, save 2 of run 1"};
        QTest::newRow("saves of a run, its serial corrected")
            << Facts{save1, save2, saved("S", nameOf(1, 3), log("y", 9, without(passed(), 3, 5)))}
            << QStringList{run[0], "S: y at 12:05, repeated, save 2 of run 1",
                           "S: y at 12:09, failed, save 3 of run 1, missed 3:5"};
        QTest::newRow("imported logs that are saves of a run")
            << Facts{save1, save2, imported("S", begun), imported("S", whole), imported("R", whole)}
            << run;
        QTest::newRow("a run by the names of two stations")
            << Facts{save1, save2, saved("R", nameOf(1, 2), whole), imported("Q", begun)}
            << QStringList{"R: x at 12:00, repeated, save 1 of run 1",
                           "R: y at 12:05, passed, save 2 of run 1"};
        QTest::newRow("the same log at two saves")
            << Facts{saved("S", nameOf(1, 1), whole), save2, saved("S", nameOf(1, 3), begun),
                     saved("S", nameOf(1, 4), whole)}
            << QStringList{"S: x at 12:00, repeated, save 3 of run 1",
                           "S: y at 12:05, passed, save 4 of run 1"};
        QTest::newRow("the same log of two stations")
            << Facts{imported("S", whole), imported("R", whole), imported("S", begun)}
            << QStringList{"R: y at 12:05, passed", "S: x at 12:00, aborted at 20, missed 3:5",
                           "S: y at 12:05, passed"};
        const QStringList known18{"S: x at 12:00, aborted at 20, 18 tested, missed 18:0",
                                  "S: x at 12:00, aborted at 20, 18 tested, missed 18:1",
                                  "S: x at 12:00, aborted at 20, 18 tested, missed 3:5", run[1]};
        QTest::newRow("TARVEK by the name of a run")
            << Facts{imported("S", begun), save2,
                     saved("S", nameOf(2, 1, true), log("z", 8, abortedAt(2)))}
            << known18 + QStringList{"S: z at 12:08, aborted at 2, 18 tested, save 1 of run 2"};
        QTest::newRow("TARVEK by a mark of a run")
            << Facts{imported("S", begun), save2,
                     saved("S", nameOf(2, 2), log("z", 7, abortedAt(2))),
                     saved("S", nameOf(2, 1), log("z", 8, passedWith18))}
            << known18 + QStringList{"S: z at 12:07, aborted at 2, 18 tested, save 2 of run 2",
                                     "S: z at 12:08, repeated, save 1 of run 2"};
        QTest::newRow("TARVEK by the option")
            << Facts{imported("S", begun), save2, tests18("S")} << known18;
    }

    void anyOrder()
    {
        QFETCH(Facts, facts);
        QFETCH(QStringList, rows);
        std::vector<std::size_t> order(facts.size());
        std::iota(order.begin(), order.end(), 0);
        for (int tried = 0; tried == 0 || std::next_permutation(order.begin(), order.end());
             ++tried) {
            if (isServer() && tried % 13 != 0) // a server takes its time, the rules are the same
                continue;
            for (const std::size_t fact : order)
                store(*database, facts[fact]);
            QCOMPARE(testdatabase::rows(*database), rows);
            for (const char* table : {"attempts", "repeated_saves", "stations"})
                database->run(QString("DELETE FROM %1").arg(table));
        }
    }

    void counts()
    {
        const auto countedAs = [&](const Fact& fact) {
            const StoreCounts counts = store(*database, fact);
            QStringList words;
            for (const auto& [count, word] : {std::make_pair(counts.added, "added"),
                                              {counts.duplicates, "duplicate"},
                                              {counts.empty, "empty"},
                                              {counts.otherStations, "other station"},
                                              {counts.future, "future"}})
                if (count == 1)
                    words << word;
            return words.join(", ");
        };
        QCOMPARE(countedAs(imported("S", whole)), QString("added"));
        QCOMPARE(countedAs(imported("S", whole)), QString("duplicate"));
        QCOMPARE(countedAs(imported("R", whole)), QString("added, other station"));
        QCOMPARE(countedAs(imported("R", whole)), QString("duplicate"));
        QCOMPARE(countedAs(imported("S", log("y", 6, {}))), QString("empty"));
        QCOMPARE(countedAs(imported("S", log("y", 9999999, passed()))), QString("added, future"));
        QCOMPARE(countedAs(save2), QString("duplicate, other station"));
        QCOMPARE(countedAs(save1), QString("added"));
        QCOMPARE(countedAs(saved("T", nameOf(1, 1), begun)), QString("duplicate, other station"));
        QCOMPARE(countedAs(imported("R", whole)), QString("duplicate, other station"));
        QCOMPARE(countedAs(saved("S", nameOf(2, 1), whole)), QString("duplicate"));
    }

    /// So that what a user stores beside an attempt stays with it.
    void idsStay()
    {
        store(*database, imported("S", whole));
        store(*database, saved("S", nameOf(2, 1), own));
        const QStringList before = testdatabase::attemptIds(*database);
        for (const Fact& fact : {save1, // a third one, until its run is known
                                 save2, saved("S", nameOf(2, 3), log("z", 11, passedWith18)),
                                 saved("R", nameOf(2, 2), log("z", 10, passed()))})
            store(*database, fact);
        QCOMPARE(testdatabase::attemptIds(*database), before);
    }

    void renamed_data()
    {
        QTest::addColumn<Facts>("others"); // beside the logs of Old
        QTest::addColumn<QStringList>("rows");
        const QStringList run{"New: x at 12:00, repeated, save 1 of run 1",
                              "New: y at 12:05, passed, save 2 of run 1"};
        const QStringList failed18{"New: z at 12:09, failed, 18 tested, missed 18:0",
                                   "New: z at 12:09, failed, 18 tested, missed 18:1"};
        const QStringList passedOwn{"New: z at 12:09, passed"};
        QTest::newRow("to a new name") << Facts() << run + passedOwn;
        QTest::newRow("to a station with the same logs")
            << Facts{imported("New", own), saved("New", nameOf(2, 1), whole)}
            << QStringList{run[0], "New: y at 12:05, passed, save 1 of run 2"} + passedOwn;
        QTest::newRow("to a TARVEK station") << Facts{tests18("New")} << run + failed18;
        QTest::newRow("from a TARVEK station")
            << Facts{tests18("Old"), imported("New", log("a", 7, abortedAt(2)))}
            << QStringList{"New: a at 12:07, aborted at 2, 18 tested"} + run + failed18;
    }

    void renamed()
    {
        QFETCH(Facts, others);
        QFETCH(QStringList, rows);
        for (const Fact& fact : {saved("Old", nameOf(1, 1), begun),
                                 saved("Old", nameOf(1, 2), whole), imported("Old", own)})
            store(*database, fact);
        for (const Fact& fact : others)
            store(*database, fact);
        attemptstore::renameStation(*database, "Old", "New");
        QCOMPARE(testdatabase::rows(*database), rows);
        attemptstore::renameStation(*database, "New", "New");
        QCOMPARE(testdatabase::rows(*database), rows);
        QCOMPARE(errorOf([&] { attemptstore::renameStation(*database, "Old", "New"); }),
                 QString("unusable: no station is named \"Old\""));
    }

    /// By serial, time, station, number of marks and packed marks, by bytes; never by the order of
    /// import.
    void readInOrder()
    {
        const QString panel = QString::fromUtf8("\U0001F39B");
        const QString halfwidth = QString::fromUtf8("\uFFEE");
        for (const Fact& fact :
             {imported("z", log("b", 0, passed())), imported("z", log("B", 99, passed())),
              imported("z", log("a", 5, passed())), imported(panel, log("b", 0, passed())),
              imported(halfwidth, log("b", 0, without(passed(), 0, 0))),
              imported(halfwidth, log("b", 0, without(passed(), 0, 1))),
              imported(halfwidth, log("b", 0, abortedAt(9))),
              imported("a", log("a", -55, passed())),
              saved("q", nameOf(1, 1, true), log("a", 4, passedWith18))})
            store(*database, fact);
        std::vector<Attempt> read;
        const auto add = [&](const auto& unit) {
            read.insert(read.end(), unit.begin(), unit.end());
        };
        attemptreader::forEachUnit(*database, add);
        QStringList order;
        for (const Attempt& attempt : read)
            order << QString("%1 %2 %3 %4")
                         .arg(attempt.serial, attempt.station)
                         .arg(attempt.marks.count())
                         .arg(attempt.marks.test(0));
        QCOMPARE(order,
                 QStringList({"B z 227 1", "a a 227 1", "a q 229 1", "a z 227 1", "b z 227 1",
                              "b " + halfwidth + " 117 1", "b " + halfwidth + " 226 1",
                              "b " + halfwidth + " 226 0", "b " + panel + " 227 1"}));
        read.clear();
        attemptreader::forEachUnit(*database, add, QString("a"));
        QCOMPARE(read.size(), std::size_t{3});
        QVERIFY(read[1].station == "q" && read[1].tests18 && !read[2].tests18);
        QCOMPARE(read[1].startedAt, QString("2026-11-21T11:59:00.000"));
        QCOMPARE(read[2].startedAt, QString());
        QCOMPARE(read[2].testedAt, QString("2026-11-21T12:05:00"));
    }

    /// Not later than now; a repeated save counts too.
    void lastLogs()
    {
        StoreCounts counts;
        attemptstore::store(*database, {"a"}, {}, counts);
        for (const Fact& fact : {saved("B", nameOf(1, 2), log("x", 0, abortedAt(30))),
                                 saved("B", nameOf(1, 1), log("x", 5, abortedAt(9))),
                                 imported("z", log("x", 0, passed())), imported("z", begun),
                                 imported("z", log("x", 3, passed()))})
            store(*database, fact);
        const auto logsAt = [&](int minute) {
            QStringList found;
            for (const auto& last :
                 attemptreader::lastLogs(*database, unitlogs::noon().addSecs(60 * minute)))
                found << last.station + last.testedAt.mid(10, 6);
            return found;
        };
        QCOMPARE(logsAt(5), QStringList({"BT12:05", "a", "zT12:03"}));
        QCOMPARE(logsAt(4), QStringList({"BT12:00", "a", "zT12:03"}));
        QCOMPARE(logsAt(2), QStringList({"BT12:00", "a", "zT12:00"}));
    }

    /// Each comes back as it was stored, and its log is a duplicate the second time.
    void hostileSerials()
    {
        QStringList serials = QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~%1~{id}").split('~');
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd};
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF \U0001F39B");
        for (const char* counted : {"added", "duplicates"})
            for (int i = 0; i < serials.size(); ++i) {
                const auto counts =
                    store(*database, saved(station, nameOf(i, 1), log(serials[i], 0, passed())));
                QCOMPARE(counted == QString("added") ? counts.added : counts.duplicates, 1);
            }
        QSet<QString> found;
        attemptreader::forEachUnit(*database, [&](const auto& unit) {
            QCOMPARE(unit.size(), std::size_t{1});
            found << (unit[0].station == station ? unit[0].serial : "at another station");
        });
        QCOMPARE(found, QSet<QString>(serials.begin(), serials.end()));
    }

private:
    static bool isServer()
    {
        QFETCH_GLOBAL(bool, isServer);
        return isServer;
    }

    PostgresServer server;
    std::unique_ptr<Database> database;
};

QTEST_GUILESS_MAIN(TestStore)
#include "test_store.moc"
