// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The station as its own main() builds it: the tests are a part of its event loop.

#include "panels/componentpanel.h"
#include "tests/app/soundpipe.h"
#include "tests/app/widgettree.h"
#include "tests/support/passingmessages.h"
#include "tests/support/station.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QFile>
#include <QTimer>
#include <QtTest>

#include <optional>

namespace
{
std::optional<SoundPipe> soundCard;

QString leftover()
{
    return QCoreApplication::applicationDirPath() + "/Logs/.zorvi_log_in_the_making_1";
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
            if (window = qobject_cast<MainWindow*>(widget); window != nullptr)
                break;
        QVERIFY(window != nullptr && window->isVisible());
    }

    void leftoversAreGone() { QVERIFY(!QFile::exists(leftover())); }

    void widgets()
    {
        const QString actual = QCoreApplication::applicationDirPath() + "/window.txt";
        QFile file(actual);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(widgetTree(*window).toUtf8());
        file.close();
        QProcess diff;
        diff.start("diff", {"-u", WIDGET_TREE, actual});
        QVERIFY(diff.waitForFinished());
        QVERIFY2(diff.exitCode() == 0, diff.readAllStandardOutput());
    }

    /// No caption is cut off at the edge of its place, whatever font the desktop has.
    void captionsFit()
    {
        for (const QWidget* widget : window->centralWidget()->findChildren<QWidget*>()) {
            const QString text = widget->property("text").toString();
            const int indicator = qobject_cast<const QCheckBox*>(widget) != nullptr ? 20 : 0;
            const int needed = widget->fontMetrics().horizontalAdvance(text) + indicator;
            QVERIFY2(needed <= widget->width(), qPrintable(text));
        }
    }

    void methodOrder()
    {
        QCOMPARE(window->qt_metacast("MidiInputCallback"),
                 static_cast<void*>(static_cast<juce::MidiInputCallback*>(window)));
        const QMetaObject* meta = window->metaObject();
        QByteArrayList methods;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            methods << meta->method(i).methodSignature();
        QCOMPARE(methods,
                 (QByteArrayList{"signal_QueueComponent(int)", "signal_Init()",
                                 "signal_DistributeMIDI(MidiMessage)", "signal_SkipComponent(int)",
                                 "signal_Beep()", "signal_Click()", "signal_Ding()", "slot_Init()",
                                 "slot_ProcessComponentResult(int,int)", "slot_PollDevices()",
                                 "slot_OutputLog()", "slot_RestartTest()", "slot_TestComplete()",
                                 "slot_SkipCurrentSensorPressed()"}));
    }

    /// What is worked is heard through ALSA, and the box switches it off and on.
    void sound()
    {
        const auto click = [this] { station::receive(*window, {{0xB0, 1, 64}}); };
        const auto beep = [this] { station::receive(*window, {{0xB0, 2, 64}}); };
        const auto bell = [this] { window->slot_ProcessComponentResult(7, 1); };
        QVERIFY(soundCard->isHeard(click));
        QVERIFY(!soundCard->isHeard(click)); // that band is covered
        QVERIFY(soundCard->isHeard(beep));
        QVERIFY(soundCard->isHeard(bell));
        station::click(*window, "audioOnOff");
        QVERIFY(!soundCard->isHeard(bell));
        station::click(*window, "audioOnOff");
        for (const char* request : {"signal_Beep", "signal_Click", "signal_Ding"}) {
            const auto emitted = [&] { QMetaObject::invokeMethod(window, request); };
            // A beep soon after another one is dropped.
            QVERIFY2(QTest::qWaitFor([&] { return soundCard->isHeard(emitted); }), request);
        }
    }
};

namespace
{
/// Runs when the station's main() has made its application object.
void begin()
{
    soundCard.emplace();
    QFile file(leftover());
    file.open(QIODevice::WriteOnly);
    file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
    QTimer::singleShot(0, qApp, [] {
        TestMain test;
        QCoreApplication::exit(QTest::qExec(&test, QCoreApplication::arguments()));
        soundCard.reset();
    });
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)

#include "test_main.moc"
