// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace
{
struct Program : QProcess {
    Program(const QString& program, const QString& arguments)
    {
        start(program, arguments.split(' ', Qt::SkipEmptyParts));
    }

    /// Waits for its end; -1 if it crashed or did not end.
    int status()
    {
        const bool ended = state() == NotRunning || waitForFinished();
        output = QString::fromLocal8Bit(readAllStandardOutput());
        errors = QString::fromLocal8Bit(readAllStandardError());
        return ended && exitStatus() == NormalExit ? exitCode() : -1;
    }

    QString output;
    QString errors;
};
} // namespace

/// The programs zorvi_unit and zorvi_demo as people start them.
class TestPrograms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// One line names the error. Needs no screen to say so.
    void rejectsBadOptions()
    {
        QVector<std::pair<QString, QString>> options{{"--pace fast", "\"fast\""},
                                                     {"--pace 0", "--pace"},
                                                     {"--pace nan", "--pace"},
                                                     {"--fault broken", "no-low-end"},
                                                     {"--runs 1.5", "--runs"},
                                                     {"--delay -1", "--delay"},
                                                     {"--fault stuck --component 39", "\"39\""},
                                                     {"loud", "loud"},
                                                     {"--sound", "sound"}};
        if (!QFileInfo::exists("/dev/snd/seq"))
            options << std::pair("", "/dev/snd/seq");
        for (const auto& [arguments, error] : options) {
            Program unit(ZORVI_UNIT, arguments);
            QCOMPARE(unit.status(), 1);
            QVERIFY2(unit.errors.contains(error) && unit.errors.count('\n') == 1,
                     qPrintable(unit.errors));
        }
        Program demo("env", "QT_QPA_PLATFORM=xcb " ZORVI_DEMO " --once --output /proc/pictures");
        QCOMPARE(demo.status(), 1);
        QVERIFY2(demo.errors.contains("/proc/pictures"), qPrintable(demo.errors));
    }

    /// The unit over the in-memory sequencer.
    void unitPlaysWholeRuns()
    {
        const QString options = "--runs 2 --delay 0 --pace 100000";
        for (const auto& [tarvek, components] : {std::pair("", 2 * 42), {" --tarvek", 2 * 43}}) {
            Program unit(ZORVI_UNIT_IN_MEMORY, options + tarvek);
            QVERIFY2(unit.status() == 0, qPrintable(unit.errors));
            QCOMPARE(unit.output.count("Component "), components);
        }
    }

    /// Whole runs at the same time: what they take is mostly the station's own pauses.
    void demos()
    {
        const QTemporaryDir folder;
        const QString once = "--once --pace 20000 --output " + folder.path();
        Program good(ZORVI_DEMO, once);
        Program weak(ZORVI_DEMO,
                     once + "/2 --tarvek --fault weak-button --component 18 --serial WEAK");
        Program bad(ZORVI_DEMO, once + "/3 --serial no/such/folder");

        QVERIFY2(good.status() == 0, qPrintable(good.errors));
        QCOMPARE(good.output.count(" passed."), 42);
        QVERIFY(good.output.contains("ZORVI_DEMO.txt"));
        QImage last;
        for (const char* name : {"start.png", "middle.png", "end.png"}) {
            const QImage picture(folder.filePath(name));
            QVERIFY2(!picture.isNull() && picture != last, name);
            last = picture;
        }
        QVERIFY2(weak.status() == 0, qPrintable(weak.errors));
        QCOMPARE(weak.output.count("did not pass"), 1);
        QVERIFY(weak.output.contains("Component 18 was worked and did not pass"));
        QCOMPARE(bad.status(), 1);
        QVERIFY2(bad.errors.contains("there is no log"), qPrintable(bad.errors));
    }
};

QTEST_GUILESS_MAIN(TestPrograms)
#include "test_programs.moc"
