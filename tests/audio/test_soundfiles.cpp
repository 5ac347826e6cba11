// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundfiles.h"
#include "tests/audio/expectedsound.h"

#include <QtTest>

/// The sound files as they should be, and as they should not.
class TestSoundFiles : public QObject
{
    Q_OBJECT

    const QDir here = QCoreApplication::applicationDirPath();

private Q_SLOTS:
    void startAndEndInSilence_data()
    {
        QTest::addColumn<double>("longestMs");
        QTest::newRow("Beep") << 151.0;
        QTest::newRow("Click") << 20.0;
        QTest::newRow("Bell") << 1300.0;
    }

    void startAndEndInSilence()
    {
        QFETCH(double, longestMs);
        const auto samples = soundSamples(QTest::currentDataTag());
        QVERIFY(!samples.empty());
        QVERIFY(static_cast<double>(samples.size()) / 44.1 < longestMs);
        QVERIFY(std::abs(samples.front()) < inaudible);
        QVERIFY(std::abs(samples.back()) < inaudible);
    }

    void problemNamesTheFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("contents"); // null: no file
        for (const QString& name : here.entryList({"Zorvi_AssemblyTest_*.wav"})) {
            QFile file(here.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray good = file.readAll();
            const QByteArray sound = name.section('_', 2).toUtf8();
            QTest::newRow(sound + " missing") << name << QByteArray();
            QTest::newRow(sound + " empty") << name << QByteArray("");
            QTest::newRow(sound + " no WAV") << name << QByteArray(5000, 'x');
            QTest::newRow(sound + " header cut") << name << good.left(20);
            QTest::newRow(sound + " header only") << name << good.left(44);
            QTest::newRow(sound + " half") << name << good.left(700);
            QTest::newRow(sound + " last sample cut") << name << good.chopped(2);
        }
    }

    void problemNamesTheFile()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, contents);
        const QTemporaryDir folder;
        for (const QString& good : here.entryList({"Zorvi_AssemblyTest_*.wav"}))
            QVERIFY(QFile::copy(here.filePath(good), folder.filePath(good)));
        QCOMPARE(soundFileProblem(folder.path()), QString());

        QFile bad(folder.filePath(file));
        QVERIFY(bad.remove());
        if (!contents.isNull()) {
            QVERIFY(bad.open(QIODevice::WriteOnly));
            bad.write(contents);
            bad.close();
        }
        const QString problem = soundFileProblem(folder.path());
        QVERIFY2(problem.contains(folder.filePath(file)), qPrintable(problem));
        QVERIFY(!problem.contains('\n'));
    }
};

QTEST_GUILESS_MAIN(TestSoundFiles)
#include "test_soundfiles.moc"
