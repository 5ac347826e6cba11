// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/app/expectedlog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

#include <unistd.h>
#ifdef __linux__
#include <sys/fsuid.h>
#endif

namespace
{
const QDateTime when(QDate(2026, 3, 9), QTime(7, 5, 4));

testlog::Coverage coverageOf(float covered)
{
    testlog::Coverage coverage;
    for (std::size_t c = 0; c < coverage.size(); ++c) {
        const int bands = c >= 9 && c < 40 ? 2 : 13;
        coverage[c].fill({0.0F, 0.0F, covered}, bands);
    }
    return coverage;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

const QByteArray whenText = "Mon Mar 9 07:05:04 2026";

bool all(int)
{
    return true;
}
bool none(int)
{
    return false;
}

/// While it lives, this thread meets file permissions as an ordinary user does, even as root.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
#ifdef __linux__
        setfsuid(65534);
#endif
    }
    ~OrdinaryUser()
    {
#ifdef __linux__
        setfsuid(geteuid());
#endif
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};
} // namespace

class TestTestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(folder->isValid());
        QVERIFY(QDir(folder->path()).mkdir(QStringLiteral("Logs")));
    }

    void everyByte_data()
    {
        QTest::addColumn<float>("covered");
        QTest::newRow("covered") << 1.0F;
        QTest::newRow("not covered") << 0.0F;
    }

    void everyByte()
    {
        QFETCH(float, covered);
        const auto lines = testlog::lines(QStringLiteral("A-17"), when, coverageOf(covered));
        QCOMPARE(lines.size(), 46);
        const QString path = testlog::path(folder->path(), QStringLiteral("A-17"));
        testlog::write(path, lines);
        QCOMPARE(contentOf(path), expectedLog("A-17", whenText, covered == 1.0F ? all : none));
    }

    void valuesInGeneralForm_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("half") << 0.5F << QStringLiteral("\r\nRange 1: 0.5");
        QTest::newRow("six digits") << 0.123456789F << QStringLiteral("\r\nRange 1: 0.123457");
        QTest::newRow("large") << 1.0e7F << QStringLiteral("\r\nRange 1: 1e+07");
    }

    void valuesInGeneralForm()
    {
        QFETCH(float, value);
        QFETCH(QString, text);
        const auto lines = testlog::lines({}, when, coverageOf(value));
        QVERIFY2(lines.at(11).endsWith(text), qPrintable(lines.at(11)));
    }

    void serials_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("file"); // below Logs; empty: nothing may be written
        QTest::newRow("empty") << QString() << QStringLiteral("ZORVI_.txt");
        QTest::newRow("spaces kept")
            << QStringLiteral(" 1 2 ") << QStringLiteral("ZORVI_ 1 2 .txt");
        QTest::newRow("place markers")
            << QStringLiteral("%1%2%L3") << QStringLiteral("ZORVI_%1%2%L3.txt");
        const QString umlauts = QString::fromUtf8("\xc3\xa4\xc3\x96\xc3\xbc");
        QTest::newRow("umlauts") << umlauts
                                 << QStringLiteral("ZORVI_") + umlauts + QStringLiteral(".txt");
        QTest::newRow("slash") << QStringLiteral("a/b") << QString();
        QTest::newRow("way out") << QStringLiteral("/../../x") << QString();
        QTest::newRow("300 characters") << QString(300, QLatin1Char('7')) << QString();
    }

    void serials()
    {
        QFETCH(QString, serial);
        QFETCH(QString, file);
        const auto lines = testlog::lines(serial, when, coverageOf(1.0F));
        testlog::write(testlog::path(folder->path(), serial), lines);

        const QDir logs(folder->filePath(QStringLiteral("Logs")));
        const QStringList expected = file.isEmpty() ? QStringList{} : QStringList{file};
        QCOMPARE(logs.entryList(QDir::Files | QDir::Hidden), expected);
        QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{QStringLiteral("Logs")});
        if (!file.isEmpty()) {
            const QByteArray typed = QTextCodec::codecForLocale()->fromUnicode(serial);
            QCOMPARE(contentOf(logs.filePath(file)), expectedLog(typed, whenText, all));
        }
    }

    void olderLogIsReplaced()
    {
        const QString path = testlog::path(folder->path(), QStringLiteral("1"));
        testlog::write(path, {QString(100000, QLatin1Char('x'))});
        testlog::write(path, {QStringLiteral("short")});
        QCOMPARE(contentOf(path), QByteArray("short\n"));
    }

    void noFolder()
    {
        QVERIFY(QDir(folder->path()).rmdir(QStringLiteral("Logs")));
        testlog::write(testlog::path(folder->path(), QStringLiteral("1")), {QStringLiteral("x")});
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void readOnlyFolder()
    {
        const QString path = testlog::path(folder->path(), QStringLiteral("1"));
        testlog::write(path, {QStringLiteral("old")});
        QFile::setPermissions(folder->path(), QFile::Permissions(0x5555));
        QFile::setPermissions(folder->filePath(QStringLiteral("Logs")), QFile::Permissions(0x5555));
        const QString other = testlog::path(folder->path(), QStringLiteral("2"));
        {
            const OrdinaryUser user;
            testlog::write(path, {QStringLiteral("new")});
            testlog::write(other, {QStringLiteral("new")});
        }
        QFile::setPermissions(folder->path(), QFile::Permissions(0x7777));
        QFile::setPermissions(folder->filePath(QStringLiteral("Logs")), QFile::Permissions(0x7777));
        QCOMPARE(contentOf(path), QByteArray("old\n"));
        QVERIFY(!QFile::exists(other));
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
};

QTEST_GUILESS_MAIN(TestTestLog)
#include "test_testlog.moc"
