// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/audioengine.h"
#include "audio/soundfiles.h"

#include <QtTest>

/// Sound files that are not what they should be.
class TestSoundFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void goodFiles();
    void problemNamesTheFile_data();
    void problemNamesTheFile();
    void engineStandsWithoutItsFiles();

private:
    static QString here() { return QCoreApplication::applicationDirPath(); }
    static QString click() { return here() + "/Zorvi_AssemblyTest_Click.wav"; }
    static QString aside() { return click() + ".aside"; }
};

void TestSoundFiles::initTestCase()
{
    // A run that was cut off may have left the file there.
    if (QFile::exists(aside()) && !QFile::exists(click()))
        QVERIFY(QFile::rename(aside(), click()));
    QFile::remove(aside());
}

void TestSoundFiles::goodFiles()
{
    QCOMPARE(soundFileProblem(here()), QString());
}

void TestSoundFiles::problemNamesTheFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("bytesKept"); // of the good file; negative: from the end
    QTest::addColumn<QByteArray>("instead");
    const QString names[] = {"Zorvi_AssemblyTest_Beep.wav", "Zorvi_AssemblyTest_Click.wav",
                             "Zorvi_AssemblyTest_Bell.wav"};
    for (const QString& name : names) {
        const QByteArray sound = name.section('_', 2).chopped(4).toUtf8();
        QTest::newRow(sound + " missing") << name << 0 << QByteArray();
        QTest::newRow(sound + " empty") << name << 0 << QByteArray("");
        QTest::newRow(sound + " no WAV") << name << 0 << QByteArray(5000, 'x');
        QTest::newRow(sound + " header cut") << name << 20 << QByteArray("");
        QTest::newRow(sound + " header only") << name << 44 << QByteArray("");
        QTest::newRow(sound + " half") << name << 700 << QByteArray("");
        QTest::newRow(sound + " last sample cut") << name << -2 << QByteArray("");
    }
}

void TestSoundFiles::problemNamesTheFile()
{
    QFETCH(QString, file);
    QFETCH(int, bytesKept);
    QFETCH(QByteArray, instead);
    QTemporaryDir directory;
    for (const QString& good : QDir(here()).entryList({"Zorvi_AssemblyTest_*.wav"}))
        QVERIFY(QFile::copy(here() + '/' + good, directory.filePath(good)));

    QFile bad(directory.filePath(file));
    QVERIFY(bad.open(QIODevice::ReadOnly));
    QByteArray contents = bad.readAll();
    bad.close();
    QVERIFY(bad.remove());
    if (!instead.isNull()) {
        contents.resize(bytesKept < 0 ? contents.size() + bytesKept : bytesKept);
        QVERIFY(bad.open(QIODevice::WriteOnly));
        bad.write(contents + instead);
        bad.close();
    }
    const QString problem = soundFileProblem(directory.path());
    QVERIFY2(problem.contains(directory.filePath(file)), qPrintable(problem));
    QVERIFY(!problem.contains('\n'));
}

void TestSoundFiles::engineStandsWithoutItsFiles()
{
    QVERIFY(QFile::rename(click(), aside()));
    AudioEngine engine;
    QVERIFY(QFile::rename(aside(), click()));
    engine.prepareToPlay(512, 44100.0);
    engine.slot_Beep();
    engine.slot_Click();
    juce::AudioBuffer<float> buffer(2, 4096);
    engine.getNextAudioBlock(juce::AudioSourceChannelInfo(buffer));
    QVERIFY(buffer.getMagnitude(0, 4096) > 0.05F); // the sounds that are there
}

QTEST_GUILESS_MAIN(TestSoundFiles)
#include "test_soundfiles.moc"
