// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "audio/soundfiles.h"
#include "tests/audio/expectedsound.h"

#include <QtTest>

/// The sound files as they are, as they may be, and as they should not be.
class TestSoundFiles : public QObject
{
    Q_OBJECT

    const QString folder = QCoreApplication::applicationDirPath();
    QMap<QString, QByteArray> good;

    static void write(const QString& sound, const QByteArray& contents)
    {
        QFile file(soundPath(sound));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* sound : {"Beep", "Click", "Bell"}) {
            QFile file(soundPath(sound));
            QVERIFY(file.open(QIODevice::ReadOnly));
            good[sound] = file.readAll();
        }
    }

    void cleanup()
    {
        for (auto sound = good.cbegin(); sound != good.cend(); ++sound)
            write(sound.key(), sound.value());
    }

    void playsWhatIsThere_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const QByteArray whole = good["Bell"];
        QProcess sox; // writes to a pipe: the header cannot know the length
        sox.start("sox", {soundPath("Bell"), "-t", "wav", "-", "repeat", "8"});
        QVERIFY(sox.waitForFinished());
        const QByteArray streamed = sox.readAllStandardOutput();
        QTest::newRow("streamed") << streamed.left(whole.size());
        QTest::newRow("more than ten seconds") << streamed;
        QTest::newRow("a sample short") << whole.chopped(2);
        QTest::newRow("half of it") << whole.left(whole.size() / 2);
        QTest::newRow("one sample") << whole.left(46);
    }

    void playsWhatIsThere()
    {
        QFETCH(QByteArray, contents);
        write("Bell", contents);
        QCOMPARE(soundFileProblem(folder), QString());
        AudioEngine engine;
        engine.prepareToPlay(512, fileRate);
        engine.slot_Ding();
        juce::AudioBuffer<float> heard(1, 500000);
        engine.getNextAudioBlock(juce::AudioSourceChannelInfo(heard));
        const float* begin = heard.getReadPointer(0);
        QVERIFY(distance({begin, begin + 500000}, mixOf({{'d'}})) < inaudible);
    }

    void problemNamesTheFile_data()
    {
        QTest::addColumn<QString>("sound");
        QTest::addColumn<QByteArray>("contents"); // null: no file
        const QByteArray whole = good["Click"];
        QTest::newRow("missing") << "Beep" << QByteArray();
        QTest::newRow("empty") << "Bell" << QByteArray("");
        QTest::newRow("no WAV") << "Bell" << QByteArray(5000, 'x');
        QTest::newRow("header cut") << "Click" << whole.left(20);
        QTest::newRow("header only") << "Click" << whole.left(44);
        QTest::newRow("promises no samples")
            << "Click" << QByteArray(whole).replace(40, 4, QByteArray(4, '\0'));
    }

    void problemNamesTheFile()
    {
        QFETCH(QString, sound);
        QFETCH(QByteArray, contents);
        write(sound, contents);
        if (contents.isNull())
            QFile::remove(soundPath(sound));
        const QString problem = soundFileProblem(folder);
        QVERIFY2(problem.contains(soundPath(sound)) && !problem.contains('\n'),
                 qPrintable(problem));
    }
};

QTEST_GUILESS_MAIN(TestSoundFiles)
#include "test_soundfiles.moc"
