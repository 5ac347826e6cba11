// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/reliability/figures.h"

#include <QTemporaryDir>

#include <random>

/// Whatever is typed or scanned for a serial number.
class TestSerials : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Qt says so on the terminal when it is given a name with a NUL in it.
    void initTestCase()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }

    /// Whatever is typed, nothing appears but files in Logs.
    void generatedSerials()
    {
        const int serials = figures::count(5000, 100000);
        QTemporaryDir base(QStringLiteral("/dev/shm/zorvi_XXXXXX"));
        if (!base.isValid())
            QSKIP("no /dev/shm");
        const QDir home(base.path());
        QVERIFY(home.mkpath(QStringLiteral("a/b/c/Logs")));
        const QString application = base.filePath(QStringLiteral("a/b/c"));
        const QDir written(application + QStringLiteral("/Logs"));
        const testlog::Coverage coverage;
        int outside = 0;
        int files = 0;
        for (int i = 0; i < serials; ++i) {
            const QString typed = generated();
            testlog::write(testlog::path(application, typed),
                           testlog::lines(typed, QDate(2026, 1, 1).startOfDay(), coverage));
            if (i % 100 != 99)
                continue;
            outside += home.entryList(all) == QStringList{QStringLiteral("a")} ? 0 : 1;
            for (const char* inner : {"a", "a/b", "a/b/c"})
                outside += QDir(base.filePath(QLatin1String(inner))).entryList(all).size() - 1;
            outside += written.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
            for (const QString& name : written.entryList(all)) {
                ++files;
                outside += name.startsWith(QLatin1String("ZORVI_")) ? 0 : 1;
                QFile::remove(written.filePath(name));
            }
        }
        figures::print(QStringLiteral("generated serial numbers"), serials, outside,
                       QStringLiteral("%1 files, all in Logs").arg(files));
        QCOMPARE(outside, 0);
        QVERIFY(files > 0);
    }

private:
    static constexpr auto all =
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

    /// Path separators, dots, control characters, NUL, right-to-left, halves of surrogate pairs,
    /// place markers; up to 4 kB long.
    QString generated()
    {
        static const QVector<ushort> odd{'/', '.',    '\\',   0,      '\n',   '\r',   '%',  '1',
                                         ':', 0x202E, 0x05D0, 0xD800, 0xDC00, 0xFFFF, 0x7F, '~'};
        const auto below = [this](int bound) {
            return std::uniform_int_distribution<int>(0, bound - 1)(engine);
        };
        static const QStringList ways{QStringLiteral("/../../x"), QStringLiteral("../x"),
                                      QStringLiteral("/etc/x"),   QStringLiteral("x/../../../y"),
                                      QStringLiteral("/./.."),    QStringLiteral("//")};
        QString text;
        if (below(4) == 0)
            text += ways.at(below(ways.size()));
        for (int rest = below(below(20) == 0 ? 4096 : 12); rest > 0; --rest)
            text += QChar(below(2) == 0 ? odd.at(below(odd.size()))
                                        : static_cast<ushort>(1 + below(0x250)));
        return text;
    }

    std::mt19937 engine{4};
};

QTEST_GUILESS_MAIN(TestSerials)
#include "test_serials.moc"
