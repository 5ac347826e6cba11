// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "soundserver.h"

#include <QStandardPaths>
#include <QtTest>

#include <cstring>

namespace
{
void stop(QProcess& process)
{
    process.terminate();
    if (!process.waitForFinished(3000))
        process.kill();
    process.waitForFinished(3000);
}
} // namespace

bool SoundServer::isInstalled()
{
    return !QStandardPaths::findExecutable("pulseaudio").isEmpty() &&
           !QStandardPaths::findExecutable("parec").isEmpty();
}

bool SoundServer::start(int sinkRate)
{
    rate = sinkRate;
    QFile alsa(directory.filePath(".asoundrc"));
    if (!alsa.open(QIODevice::WriteOnly))
        return false;
    alsa.write("pcm.!default { type pulse }\nctl.!default { type pulse }\n");
    alsa.close();
    const QString socket = directory.filePath("native");
    qputenv("HOME", directory.path().toUtf8());
    qputenv("XDG_RUNTIME_DIR", directory.path().toUtf8());
    qputenv("PULSE_RUNTIME_PATH", directory.path().toUtf8());
    qputenv("PULSE_SERVER", "unix:" + socket.toUtf8());

    server.setStandardErrorFile(directory.filePath("server.log"));
    server.start(
        "pulseaudio",
        {"-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes",
         "-L", "module-native-protocol-unix auth-anonymous=1 socket=" + socket, "-L",
         QString("module-null-sink sink_name=null format=float32le channels=2 rate=%1").arg(rate)});
    return server.waitForStarted() && QTest::qWaitFor([&] { return QFile::exists(socket); }, 10000);
}

SoundServer::~SoundServer()
{
    stop(recorder);
    stop(server);
}

bool SoundServer::startRecording()
{
    recorded.clear();
    recorder.start("parec", {"-d", "null.monitor", "--raw", "--format=float32le", "--channels=2",
                             "--latency-msec=20", QString("--rate=%1").arg(rate)});
    return QTest::qWaitFor([this] { return recorder.bytesAvailable() > 0; }, 10000);
}

std::vector<double> SoundServer::stopRecording()
{
    QTest::qWait(300); // what is on its way
    stop(recorder);
    recorded = recorder.readAllStandardOutput();
    std::vector<double> left;
    constexpr int frame = 2 * sizeof(float);
    for (int i = 0; i + frame <= recorded.size(); i += frame) {
        float sample = 0.0F;
        std::memcpy(&sample, recorded.constData() + i, sizeof sample);
        left.push_back(sample);
    }
    return left;
}
