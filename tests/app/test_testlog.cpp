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
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// From now on this thread meets file permissions as that user does.
void meetPermissionsAs(uid_t user)
{
#ifdef __linux__
    setfsuid(user);
#else
    Q_UNUSED(user)
#endif
}
} // namespace

class TestTestLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serials_data()
    {
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("file"); // below Logs; empty: nothing may be written
        QTest::newRow("empty") << ""
                               << "ZORVI_.txt";
        QTest::newRow("spaces kept") << " 1 2 "
                                     << "ZORVI_ 1 2 .txt";
        QTest::newRow("place markers") << "%1%2%L3"
                                       << "ZORVI_%1%2%L3.txt";
        QTest::newRow("umlauts") << "\u00e4\u00d6\u00fc"
                                 << "ZORVI_\u00e4\u00d6\u00fc.txt";
        QTest::newRow("slash") << "a/b"
                               << "";
        QTest::newRow("way out") << "/../../x"
                                 << "";
        QTest::newRow("300 characters") << QString(300, '7') << "";
    }

    /// Every byte of the log, and nothing else in the folder.
    void serials()
    {
        QFETCH(QString, serial);
        QFETCH(QString, file);
        const QTemporaryDir folder;
        const QDir logs(folder.filePath("Logs"));
        QVERIFY(logs.mkpath("."));
        testlog::Coverage coverage;
        for (std::size_t c = 0; c < coverage.size(); ++c)
            coverage[c].fill({0.0F, 0.0F, 1.0F}, c >= 9 && c < 40 ? 2 : 13);
        const QDateTime when({2026, 3, 9}, {7, 5, 4});
        testlog::write(testlog::path(folder.path(), serial),
                       testlog::lines(serial, when, coverage));

        QCOMPARE(logs.entryList(QDir::Files | QDir::Hidden).join('|'), file);
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList("Logs"));
        if (!file.isEmpty())
            QCOMPARE(contentOf(logs.filePath(file)),
                     expectedLog(QTextCodec::codecForLocale()->fromUnicode(serial),
                                 "Mon Mar 9 07:05:04 2026", [](int) { return true; }));
    }

    /// An older log is replaced, or in a folder that takes nothing stays as it is.
    void olderLog()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("old");
        testlog::write(path, {QString(100000, 'x')});
        testlog::write(path, {"old"});
        QFile::setPermissions(folder.path(), QFile::Permissions(0x5555));
        meetPermissionsAs(65534); // even where the tests run as root
        testlog::write(path, {"new"});
        testlog::write(folder.filePath("new"), {"new"});
        meetPermissionsAs(geteuid());
        QFile::setPermissions(folder.path(), QFile::Permissions(0x7777));
        QCOMPARE(contentOf(path), QByteArray("old\n"));
        QVERIFY(!QFile::exists(folder.filePath("new")));
    }
};

QTEST_GUILESS_MAIN(TestTestLog)
#include "test_testlog.moc"
