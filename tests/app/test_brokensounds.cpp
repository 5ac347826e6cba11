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
    void stationNamesTheFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("bytesKept");
        QTest::addColumn<QByteArray>("instead");
        for (const char* sound : {"Beep", "Click", "Bell"}) {
            const QString file = QString("Zorvi_AssemblyTest_%1.wav").arg(sound);
            QTest::addRow("%s missing", sound) << file << -1 << QByteArray();
            QTest::addRow("%s empty", sound) << file << 0 << QByteArray();
            QTest::addRow("%s without samples", sound) << file << 44 << QByteArray();
            QTest::addRow("%s not a WAV", sound) << file << 0 << QByteArray(5000, 'x');
        }
    }

    void stationNamesTheFile()
    {
        QFETCH(QString, file);
        QFETCH(int, bytesKept);
        QFETCH(QByteArray, instead);
        const QTemporaryDir folder;
        const QDir installed = QFileInfo(ZORVI_STATION).dir();
        for (const QString& name : installed.entryList({"zorvi_assembly_test", "*.wav"}))
            QVERIFY(QFile::copy(installed.filePath(name), folder.filePath(name)));
        QFile sound(folder.filePath(file));
        QVERIFY(sound.open(QIODevice::ReadOnly));
        const QByteArray contents = sound.read(qMax(0, bytesKept)) + instead;
        sound.close();
        QVERIFY(sound.remove());
        if (bytesKept >= 0) {
            QVERIFY(sound.open(QIODevice::WriteOnly));
            sound.write(contents);
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
};

QTEST_GUILESS_MAIN(TestBrokenSounds)
#include "test_brokensounds.moc"
