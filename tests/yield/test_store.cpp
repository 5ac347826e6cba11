// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/testdatabase.h"
#include "tests/yield/unitlogs.h"
#include "yield/store/attemptreader.h"
#include "yield/store/attemptstore.h"
#include "yield/store/schema.h"

#include <QTemporaryDir>
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
    return attemptstore::store(database, fact.station, {fact.file});
}

const StationLog begun = log("x", 0, without(abortedAt(20), 3, 5));
const StationLog whole = log("y", 5, passed());
const StationLog own = log("z", 9, passed());
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
        const auto row = [](const char* name, const Facts& facts, const QStringList& rows) {
            QTest::newRow(name) << facts << rows;
        };
        const Fact save1 = saved("S", nameOf(1, 1), begun);
        const Fact save2 = saved("S", nameOf(1, 2), whole);
        row("saves of a run, its serial corrected",
            {save1, save2, saved("S", nameOf(1, 3), log("y", 9, without(passed(), 3, 5)))},
            {"S: x at 12:00, repeated, save 1 of run 1, 136 marks",
             "S: y at 12:05, repeated, save 2 of run 1, 227 marks",
             "S: y at 12:09, failed, save 3 of run 1, missed 3:5, 226 marks"});
        row("imported logs that are saves of a run",
            {save1, save2, imported("S", begun), imported("S", whole), imported("R", whole)},
            {"S: x at 12:00, repeated, save 1 of run 1, 136 marks",
             "S: y at 12:05, passed, save 2 of run 1, 227 marks"});
        row("a run by the names of two stations",
            {save1, save2, saved("R", nameOf(1, 2), whole), imported("Q", begun)},
            {"R: x at 12:00, repeated, save 1 of run 1, 136 marks",
             "R: y at 12:05, passed, save 2 of run 1, 227 marks"});
        row("the same log at two saves",
            {saved("S", nameOf(1, 1), whole), save2, saved("S", nameOf(1, 3), begun),
             saved("S", nameOf(1, 4), whole)},
            {"S: x at 12:00, repeated, save 3 of run 1, 136 marks",
             "S: y at 12:05, passed, save 4 of run 1, 227 marks"});
        row("the same log of two stations",
            {imported("S", whole), imported("R", whole), imported("S", begun)},
            {"R: y at 12:05, passed, 227 marks",
             "S: x at 12:00, aborted at 20, missed 3:5, 136 marks",
             "S: y at 12:05, passed, 227 marks"});
        const QStringList known18{
            "S: x at 12:00, aborted at 20, 18 tested, missed 18:0, 136 marks",
            "S: x at 12:00, aborted at 20, 18 tested, missed 18:1, 136 marks",
            "S: x at 12:00, aborted at 20, 18 tested, missed 3:5, 136 marks",
            "S: y at 12:05, passed, save 2 of run 1, 227 marks",
        };
        row("TARVEK by a run's name",
            {imported("S", begun), save2,
             saved("S", nameOf(2, 1, true), log("z", 7, without(passedWith18(), 18, 1))),
             saved("S", nameOf(3, 1, true), log("z", 8, abortedAt(2)))},
            known18 +
                QStringList{
                    "S: z at 12:07, failed, 18 tested, save 1 of run 2, missed 18:1, 228 marks",
                    "S: z at 12:08, aborted at 2, 18 tested, save 1 of run 3, 26 marks"});
        row("TARVEK by a mark",
            {imported("S", begun), save2, imported("S", log("z", 7, passedWith18()))},
            known18 + QStringList{"S: z at 12:07, passed, 18 tested, 229 marks"});
        row("TARVEK by a mark of a run",
            {imported("S", begun), save2, saved("S", nameOf(2, 1), log("z", 7, abortedAt(2))),
             saved("S", nameOf(2, 2), log("z", 8, passedWith18()))},
            known18 + QStringList{"S: z at 12:07, repeated, save 1 of run 2, 26 marks",
                                  "S: z at 12:08, passed, 18 tested, save 2 of run 2, 229 marks"});
        row("TARVEK by the option", {imported("S", begun), save2, tests18("S")}, known18);
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
        const auto counted = [&](const Fact& fact) {
            const StoreCounts counts = store(*database, fact);
            return QVector<int>{counts.added, counts.duplicates, counts.empty, counts.otherStations,
                                counts.future};
        };
        QCOMPARE(counted(imported("S", whole)), QVector<int>({1, 0, 0, 0, 0}));
        QCOMPARE(counted(imported("S", whole)), QVector<int>({0, 1, 0, 0, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({1, 0, 0, 1, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({0, 1, 0, 0, 0}));
        QCOMPARE(counted(imported("S", log("y", 6, {}))), QVector<int>({0, 0, 1, 0, 0}));
        QCOMPARE(counted(imported("S", log("y", 9999999, passed()))),
                 QVector<int>({1, 0, 0, 0, 1}));
        QCOMPARE(counted(saved("S", nameOf(1, 2), whole)), QVector<int>({0, 1, 0, 1, 0}));
        QCOMPARE(counted(saved("S", nameOf(1, 1), begun)), QVector<int>({1, 0, 0, 0, 0}));
        QCOMPARE(counted(saved("T", nameOf(1, 1), begun)), QVector<int>({0, 1, 0, 1, 0}));
        QCOMPARE(counted(imported("R", whole)), QVector<int>({0, 1, 0, 1, 0}));
        QCOMPARE(counted(saved("S", nameOf(2, 1), whole)), QVector<int>({0, 1, 0, 0, 0}));
    }

    /// So that what a user stores beside an attempt stays with it.
    void idsStay()
    {
        store(*database, imported("S", whole));
        store(*database, saved("S", nameOf(2, 1), own));
        const QVector<int> before = testdatabase::attemptIds(*database);
        QCOMPARE(before.size(), 2);
        store(*database, saved("S", nameOf(1, 1), begun)); // a third one, until its run is known
        store(*database, saved("S", nameOf(1, 2), whole));
        store(*database, saved("S", nameOf(2, 3), log("z", 11, passedWith18())));
        store(*database, saved("R", nameOf(2, 2), log("z", 10, passed())));
        QCOMPARE(testdatabase::attemptIds(*database), before);
    }

    void renamed_data()
    {
        QTest::addColumn<Facts>("others"); // beside the logs of Old
        QTest::addColumn<QStringList>("rows");
        const QStringList run{"New: x at 12:00, repeated, save 1 of run 1, 136 marks",
                              "New: y at 12:05, passed, save 2 of run 1, 227 marks"};
        const QStringList passed18{"New: z at 12:09, failed, 18 tested, missed 18:0, 227 marks",
                                   "New: z at 12:09, failed, 18 tested, missed 18:1, 227 marks"};
        const QStringList passedOwn{"New: z at 12:09, passed, 227 marks"};
        QTest::newRow("to a new name") << Facts() << run + passedOwn;
        QTest::newRow("to a station with the same logs")
            << Facts{imported("New", own), saved("New", nameOf(2, 1), whole)}
            << QStringList{run[0], "New: y at 12:05, passed, save 1 of run 2, 227 marks"} +
                   passedOwn;
        QTest::newRow("to a TARVEK station") << Facts{tests18("New")} << run + passed18;
        QTest::newRow("from a TARVEK station")
            << Facts{tests18("Old"), imported("New", log("a", 7, abortedAt(2)))}
            << QStringList{"New: a at 12:07, aborted at 2, 18 tested, 26 marks"} + run + passed18;
    }

    void renamed()
    {
        QFETCH(Facts, others);
        QFETCH(QStringList, rows);
        Facts facts{saved("Old", nameOf(1, 1), begun), saved("Old", nameOf(1, 2), whole),
                    imported("Old", own)};
        facts.insert(facts.end(), others.begin(), others.end());
        for (const Fact& fact : facts)
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
              saved("q", nameOf(1, 1, true), log("a", 4, passedWith18()))})
            store(*database, fact);
        std::vector<Attempt> read;
        const auto add = [&](const Attempt& attempt) { read.push_back(attempt); };
        attemptreader::forEachByUnit(*database, add);
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
        attemptreader::forEachByUnit(*database, add, QString("a"));
        QCOMPARE(read.size(), std::size_t{3});
        QVERIFY(read[1].station == "q" && read[1].tests18 && !read[2].tests18);
        QCOMPARE(read[1].startedAt, QString("2026-11-21T11:59:00.000"));
        QCOMPARE(read[2].startedAt, QString());
        QCOMPARE(read[2].testedAt, QString("2026-11-21T12:05:00"));
    }

    /// Not later than now; a repeated save counts too.
    void lastLogs()
    {
        attemptstore::store(*database, {"a"}, {});
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
        QStringList serials =
            QString("~ ~\t~\r\n~'~\\~\\x41~\"; --~?~$1~:a~a\tb~%1~{id}").split('~');
        serials +=
            {QString(1000, 'x'), QString(333, QChar(0x4E0A)), QString::fromUtf8("\U0001F39B")};
        for (const QChar odd : {0xFEFF, 0xFFFE, 0xFFFF, 0x0001, 0x202E, 0xE000})
            serials += {QString(odd), QString(odd) + "A", QString("A") + odd, QString(2, odd)};
        std::vector<LogFile> logs(static_cast<std::size_t>(serials.size()));
        for (int i = 0; i < serials.size(); ++i)
            logs[static_cast<std::size_t>(i)] = {log(serials[i], 0, passed()), nameOf(i, 1)};
        const QString station = QString::fromUtf8("\uFEFFodd \uFFFF");
        QCOMPARE(attemptstore::store(*database, {station}, logs).added, serials.size());
        QCOMPARE(attemptstore::store(*database, {station}, logs).duplicates, serials.size());
        QSet<QString> found;
        attemptreader::forEachByUnit(*database, [&](const Attempt& attempt) {
            found << (attempt.station == station ? attempt.serial : "at another station");
        });
        QCOMPARE(found, QSet<QString>(serials.begin(), serials.end()));
    }

    /// All of the logs are stored, or none.
    void fullDisk()
    {
        if (isServer())
            return;
        database->run("PRAGMA max_page_count = 1"); // as many as there are
        std::vector<LogFile> logs(1000);
        for (std::size_t i = 0; i < logs.size(); ++i)
            logs[i].log = log("x", static_cast<int>(i), passed());
        const auto act = [&] { attemptstore::store(*database, {"S"}, logs); };
        QVERIFY(errorOf(act).startsWith("unavailable: "));
        QCOMPARE(testdatabase::rows(*database), QStringList());
    }

    void errors()
    {
        const auto read = [&] { attemptreader::forEachByUnit(*database, [](const Attempt&) {}); };
        const auto run = [&](const char* sql) { return errorOf([&] { database->run(sql); }); };
        // What the tables reject is the log's fault: the next one may be stored.
        QVERIFY(run("INSERT INTO stations (name) VALUES (NULL)").startsWith("data: "));
        store(*database, imported("S", log("a\n", 0, passed())));
        database->run("UPDATE attempts SET marks = substr(marks, 2)");
        QCOMPARE(errorOf(read), QString("data: the marks of an attempt in the database are damaged "
                                        "(serial \"a\uFFFD\")"));
        QVERIFY(run("SELECT none FROM stations").startsWith("unavailable: "));
        database = testdatabase::empty(isServer() ? &server : nullptr);
        QVERIFY(errorOf(read).contains("holds no attempts yet"));
        if (!isServer()) {
            const QTemporaryDir folder;
            const QString missing = folder.filePath("missing");
            const auto open = [&] { Database(missing, Database::Access::Read); };
            QVERIFY(errorOf(open).startsWith("unusable: there is no database " + missing));
            QVERIFY(!QFile::exists(missing));
            // Otherwise a power cut undoes a commit that was reported.
            Statement synchronous(*database, "PRAGMA synchronous");
            synchronous.run();
            QVERIFY(synchronous.next());
            QCOMPARE(synchronous.number(0), 3); // EXTRA
            return;
        }
        database->run("CREATE DATABASE latin ENCODING LATIN1 LOCALE_PROVIDER libc LOCALE 'C' "
                      "TEMPLATE template0");
        const auto open = [&] {
            Database(server.location().replace("/postgres", "/latin"), Database::Access::Read);
        };
        QVERIFY(errorOf(open).contains("encoding UTF8"));
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
