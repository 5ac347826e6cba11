// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/// The station as it is installed, with one of its sounds broken: it says so and does not start.
class TestBrokenSounds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stationNamesTheFile()
    {
        const QDir installed = QFileInfo(ZORVI_STATION).dir();
        const QStringList sounds = installed.entryList({"*.wav"});
        QCOMPARE(sounds.size(), 3);
        for (int broken = 0; broken < 3; ++broken) {
            const QTemporaryDir folder;
            for (const QString& name : sounds + QStringList{"zorvi_assembly_test"})
                QVERIFY(QFile::copy(installed.filePath(name), folder.filePath(name)));
            QFile sound(folder.filePath(sounds.at(broken)));
            QVERIFY(sound.remove());
            if (broken > 0) { // one is missing, the others are no sounds
                QVERIFY(sound.open(QIODevice::WriteOnly));
                sound.write(QByteArray(broken == 1 ? 0 : 5000, 'x'));
                sound.close();
            }

            qputenv("XDG_RUNTIME_DIR", folder.path().toLocal8Bit()); // else Qt has a line of its own
            QProcess station;
            station.start(folder.filePath("zorvi_assembly_test"), QStringList());
            QVERIFY2(station.waitForFinished(20000), "waits for an answer that nobody gives");
            QCOMPARE(station.exitStatus(), QProcess::NormalExit);
            QCOMPARE(station.exitCode(), 1);
            const QByteArray errors = station.readAllStandardError();
            QCOMPARE(errors.count('\n'), 1);
            QVERIFY2(errors.contains(sound.fileName().toLocal8Bit()), errors);
        }
    }
};

QTEST_GUILESS_MAIN(TestBrokenSounds)
#include "test_brokensounds.moc"
