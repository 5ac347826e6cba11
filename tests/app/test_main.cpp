// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The station as its own main() builds it: the tests run in its event loop.

#include "tests/support/station.h"

#include <QApplication>
#include <QDateTime>
#include <QTimer>
#include <QtTest>

#include <array>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
/// ALSA's default device writes what is played into this pipe; reading it sets the pace.
int soundPipe = -1;

void makeSoundCard()
{
    static const QTemporaryDir home;
    const QByteArray pipe = QFile::encodeName(home.filePath("pipe"));
    mkfifo(pipe.constData(), 0600);
    soundPipe = open(pipe.constData(), O_RDWR);
    QFile alsa(home.filePath(".asoundrc"));
    alsa.open(QIODevice::WriteOnly);
    alsa.write("pcm.!default { type asym capture.pcm null playback.pcm { type file slave.pcm null "
               "format raw file \"" +
               pipe + "\" } }\n");
    qputenv("HOME", QFile::encodeName(home.path()));
}

/// Whether longer than any sound nothing but zeros are played.
bool isSilent()
{
    std::array<qint32, 1024> samples; // of 32 bits, or two of 16 in one
    for (qint64 left = 800000; left > 0;) {
        pollfd ready{soundPipe, POLLIN, 0};
        if (poll(&ready, 1, 20000) <= 0)
            return true; // nothing plays at all
        const auto bytes = read(soundPipe, samples.data(), sizeof samples);
        if (std::any_of(samples.begin(), samples.begin() + bytes / 4, [](int s) { return s != 0; }))
            return false;
        left -= bytes;
    }
    return true;
}

bool isHeard(const std::function<void()>& action)
{
    while (!isSilent())
        ;
    action();
    return !isSilent();
}

QString leftover()
{
    return QCoreApplication::applicationDirPath() + "/Logs/.zorvi_log_in_the_making_1";
}

/// The widgets with what their forms set, from the bottom of the stack to the top; of each class of
/// panel one in full, and the signals and slots in the order of the meta-object.
void describe(QTextStream& out, const QWidget& widget, const QString& indent)
{
    static QSet<QString> seen;
    const QMetaObject& meta = *widget.metaObject();
    const auto* panel = qobject_cast<const ComponentPanel*>(&widget);
    out << indent << meta.className() << ' ' << widget.objectName() << ' ' << widget.width() << 'x'
        << widget.height();
    if (widget.isWindow())
        out << ' ' << widget.font().family() << " at " << widget.logicalDpiY() << " dpi";
    else
        out << " at " << widget.x() << ',' << widget.y() << (widget.isHidden() ? " hidden" : "");
    if (panel != nullptr)
        out << " component " << panel->getComponentNum();
    const bool again = panel != nullptr && seen.contains(meta.className());
    seen << meta.className();
    if (!widget.property("text").toString().isEmpty())
        out << ' ' << widget.font().pointSize() << "pt";
    for (const char* name : {"windowTitle", "text", "checked", "frameShape", "frameShadow",
                             "minimum", "maximum", "pageStep", "orientation", "maxLength",
                             "inputMask", "alignment", "readOnly", "styleSheet"})
        if (const QVariant value = widget.property(name);
            !again && !value.toString().isEmpty() && value != false)
            out << ' ' << name << '=' << value.toString().simplified();
    out << '\n';
    if (again)
        return;
    const auto& base = panel != nullptr ? QWidget::staticMetaObject : QMainWindow::staticMetaObject;
    if (panel != nullptr || widget.isWindow())
        for (int i = base.methodCount(); i < meta.methodCount(); ++i)
            out << indent << "  " << meta.method(i).methodSignature() << '\n';
    for (const QObject* child : widget.children())
        if (child->isWidgetType() && !child->objectName().startsWith("qt_"))
            describe(out, *static_cast<const QWidget*>(child), indent + "  ");
}
} // namespace

class TestMain : public QObject
{
    Q_OBJECT

    MainWindow* window = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<MainWindow*>(widget))
                window = found;
        QVERIFY(window != nullptr && window->isVisible());
        QCOMPARE(window->qt_metacast("MidiInputCallback"),
                 static_cast<void*>(static_cast<juce::MidiInputCallback*>(window)));
        QVERIFY(!QFile::exists(leftover()));
    }

    void widgets()
    {
        QFile file(QCoreApplication::applicationDirPath() + "/window.txt");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QTextStream out(&file);
        describe(out, *window, {});
        out.flush();
        QProcess diff;
        diff.start("diff", {"-u", WINDOW_AS_BUILT, file.fileName()});
        QVERIFY(diff.waitForFinished());
        QVERIFY2(diff.exitCode() == 0, diff.readAllStandardOutput());
    }

    /// What is worked is heard through ALSA, and the box switches it off and on.
    void sound()
    {
        const auto click = [this] { station::receive(*window, {{0xB0, 1, 64}}); };
        const auto beep = [this] { station::receive(*window, {{0xB0, 2, 64}}); };
        const auto bell = [this] { window->slot_ProcessComponentResult(7, 1); };
        QVERIFY(isHeard(click));
        QVERIFY(!isHeard(click)); // that band is covered
        QVERIFY(isHeard(beep));
        QVERIFY(isHeard(bell));
        station::click(*window, "audioOnOff");
        QVERIFY(!isHeard(bell));
        station::click(*window, "audioOnOff");
        for (const char* request : {"signal_Beep", "signal_Click", "signal_Ding"}) {
            const auto emitted = [&] { QMetaObject::invokeMethod(window, request); };
            // A beep soon after another one is dropped.
            QVERIFY2(QTest::qWaitFor([&] { return isHeard(emitted); }), request);
        }
    }

    /// The installed station with one of its sounds missing, empty or no sound: it names the file
    /// and does not start.
    void brokenSounds()
    {
        const QDir installed = QFileInfo(ZORVI_STATION).dir();
        const QMap<QString, QByteArray> sounds{
            {"Beep", ""}, {"Bell", QByteArray(5000, 'x')}, {"Click", QByteArray()}};
        for (const QString& sound : sounds.keys()) {
            const QTemporaryDir folder;
            for (const QString& name : installed.entryList({"zorvi_assembly_test", "*.wav"}))
                QVERIFY(QFile::copy(installed.filePath(name), folder.filePath(name)));
            QFile file(folder.filePath("Zorvi_AssemblyTest_" + sound + ".wav"));
            QVERIFY(file.remove());
            if (!sounds[sound].isNull() && file.open(QIODevice::WriteOnly))
                file.write(sounds[sound]);
            file.close();
            QProcess station;
            station.start(folder.filePath("zorvi_assembly_test"), QStringList());
            QVERIFY2(station.waitForFinished(20000), "waits for an answer that nobody gives");
            QVERIFY(station.exitStatus() == QProcess::NormalExit && station.exitCode() == 1);
            const QByteArray errors = station.readAllStandardError();
            QVERIFY2(errors.count(".wav") == 1 && errors.contains(file.fileName().toUtf8()),
                     errors);
        }
    }
};

namespace
{
/// Called once the station's main() has made its application object.
void begin()
{
    makeSoundCard();
    QFile file(leftover());
    file.open(QIODevice::WriteOnly);
    file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
    QTimer::singleShot(0, qApp, [] {
        TestMain test;
        QCoreApplication::exit(QTest::qExec(&test, QCoreApplication::arguments()));
        std::thread([] {
            while (true)
                isSilent();
        }).detach(); // the device waits for its reader
    });
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)

#include "test_main.moc"
