// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "panels/componentpanel.h"
#include "tests/passingmessages.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFrame>
#include <QLineEdit>
#include <QTest>

namespace
{
QString textOf(const QWidget* widget)
{
    return widget->property("text").toString();
}

/// The process's threads that run a plain QThread, by the name that Qt gives them.
int workerThreads()
{
    int count = 0;
    for (const auto& task : QDir("/proc/self/task").entryInfoList(QDir::Dirs)) {
        QFile name(task.filePath() + "/comm");
        if (name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "QThread")
            ++count;
    }
    return count;
}

/// Where the panels lie, by component.
const QPoint places[] = {{120, 200}, {210, 200}, {300, 200},  {390, 200}, {480, 200}, {570, 200},
                         {660, 200}, {750, 200}, {1005, 200}, {120, 150}, {210, 150}, {300, 150},
                         {390, 150}, {480, 150}, {570, 150},  {660, 150}, {750, 150}, {1005, 150},
                         {30, 210},  {30, 270},  {30, 330},   {30, 390},  {876, 150}, {840, 200},
                         {915, 200}, {840, 248}, {915, 248},  {840, 296}, {915, 296}, {840, 344},
                         {915, 344}, {840, 392}, {915, 392},  {840, 440}, {915, 440}, {876, 15},
                         {876, 85},  {840, 50},  {915, 50},   {0, 0},     {130, 10},  {310, 10},
                         {490, 10},  {670, 10}};
} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void form_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("style");
        const auto row = [](const char* name, const char* type, const char* parent, QRect geometry,
                            const char* text = "", const char* style = "") {
            QTest::newRow(name) << QByteArray(type) << parent << geometry << text << style;
        };
        const char* box =
            "QFrame{background:none; border: 1px solid black;}\nQLabel{border: none;}";
        const char* large = "QLabel{font-size: 16pt;}";
        row("frame", "QFrame", "centralWidget", {10, 485, 1061, 111}, "",
            "QFrame{background: white;}");
        row("log", "QToolButton", "frame", {440, 60, 121, 31}, "Save Log");
        row("frame_2", "QFrame", "frame", {10, 10, 201, 91}, "", box);
        row("deviceLabel", "QLabel", "frame_2", {10, 30, 131, 16}, "Device: NOT CONNECTED");
        row("firmwareVersionLabel", "QLabel", "frame_2", {10, 50, 171, 16}, "Firmware Version:");
        row("bootloaderVersionLabel", "QLabel", "frame_2", {10, 70, 171, 16},
            "Bootloader Version:");
        row("label_5", "QLabel", "frame_2", {10, 5, 131, 21}, "STEP 1", large);
        row("frame_3", "QFrame", "frame", {220, 10, 211, 91}, "", box);
        row("label_9", "QLabel", "frame_3", {10, 5, 131, 21}, "STEP 2", large);
        row("serialNumber", "QLineEdit", "frame_3", {90, 30, 113, 20});
        row("label", "QLabel", "frame_3", {10, 30, 71, 21}, "Enter Serial #");
        row("startTest", "QToolButton", "frame_3", {10, 55, 191, 31}, "Start Test");
        row("audioOnOff", "QCheckBox", "frame", {440, 30, 131, 20}, "Audio ON / OFF");
        row("label_10", "QLabel", "frame", {620, 20, 261, 71}, "Zorvi Sensor Assembly Test", large);
        row("skipSensorButton", "QToolButton", "frame", {930, 40, 101, 31}, "Skip Sensor >>");
        row("frame_4", "QFrame", "centralWidget", {10, 0, 1066, 477}, "",
            "QFrame{background: black; border-radius: 20px;}");
    }

    void form()
    {
        QFETCH(QByteArray, type);
        QFETCH(QString, parent);
        QFETCH(QRect, geometry);
        QFETCH(QString, text);
        QFETCH(QString, style);
        const MainWindow window;
        const auto* widget = window.centralWidget()->findChild<QWidget*>(QTest::currentDataTag());
        QVERIFY(widget != nullptr);
        QCOMPARE(widget->parent()->objectName(), parent);
        QCOMPARE(QByteArray(widget->metaObject()->className()), type);
        QCOMPARE(widget->geometry(), geometry);
        QCOMPARE(textOf(widget), text);
        QCOMPARE(widget->styleSheet(), style);
        if (type == "QFrame") {
            QCOMPARE(static_cast<const QFrame*>(widget)->frameShape(), QFrame::StyledPanel);
            QCOMPARE(static_cast<const QFrame*>(widget)->frameShadow(), QFrame::Raised);
        }
    }

    void windowItself()
    {
        const MainWindow window;
        QCOMPARE(window.objectName(), QString("MainWindow"));
        QCOMPARE(window.size(), QSize(1086, 602));
        QCOMPARE(window.windowTitle(), QString("0908 Zorvi Assembly Test"));
        QCOMPARE(window.centralWidget()->objectName(), QString("centralWidget"));
        const auto* audio = window.findChild<QCheckBox*>("audioOnOff");
        QVERIFY(audio->isChecked());
        QCOMPARE(audio->font().pointSize(), 11);
        const auto* serial = window.findChild<QLineEdit*>("serialNumber");
        QVERIFY(serial->validator() == nullptr);
        QCOMPARE(serial->maxLength(), 32767); // Qt's own limit
    }

    /// No caption is cut off at the edge of its place.
    void captionsFit()
    {
        const MainWindow window;
        const auto widgets = window.centralWidget()->findChildren<QWidget*>();
        int captions = 0;
        for (const QWidget* widget : widgets) {
            if (textOf(widget).isEmpty())
                continue;
            ++captions;
            widget->ensurePolished();
            const int indicator = qobject_cast<const QCheckBox*>(widget) ? 20 : 0;
            const int needed = widget->fontMetrics().horizontalAdvance(textOf(widget)) + indicator;
            QVERIFY2(needed <= widget->width(), qPrintable(textOf(widget)));
        }
        QCOMPARE(captions, 11);
    }

    void castsAndMethodOrder()
    {
        MainWindow window;
        QCOMPARE(window.qt_metacast("MidiInputCallback"),
                 static_cast<void*>(static_cast<juce::MidiInputCallback*>(&window)));
        const QByteArrayList expected{"signal_QueueComponent(int)",
                                      "signal_Init()",
                                      "signal_DistributeMIDI(MidiMessage)",
                                      "signal_SkipComponent(int)",
                                      "signal_Beep()",
                                      "signal_Click()",
                                      "signal_Ding()",
                                      "slot_Init()",
                                      "slot_ProcessComponentResult(int,int)",
                                      "slot_PollDevices()",
                                      "slot_OutputLog()",
                                      "slot_RestartTest()",
                                      "slot_TestComplete()",
                                      "slot_SkipCurrentSensorPressed()"};
        const QMetaObject* meta = window.metaObject();
        QByteArrayList methods;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            methods << meta->method(i).methodSignature();
        QCOMPARE(methods, expected);
    }

    void panels_data()
    {
        QTest::addColumn<bool>("channelButtonShown");
        QTest::newRow("zorvi_assembly_test_TARVEK") << true;
        QTest::newRow("aTARVEKb") << true;
        QTest::newRow("zorvi_assembly_test_tarvek") << false;
        QTest::newRow("zorvi_assembly_test") << false;
    }

    /// Which panels are shown, where they lie, that they lie above the backdrop, and that hidden
    /// ones hear every broadcast like the others.
    void panels()
    {
        QFETCH(bool, channelButtonShown);
        QCoreApplication::setApplicationName(QTest::currentDataTag());
        MainWindow window;
        QCOMPARE(window.findChildren<ComponentPanel*>().size(), 44);
        for (auto* panel : window.findChildren<ComponentPanel*>()) {
            const int c = panel->component();
            QCOMPARE(panel->pos(), places[c]);
            QCOMPARE(panel->parentWidget(), static_cast<QWidget*>(&window));
            QCOMPARE(panel->isHidden(), c == 39 || (c == 18 && !channelButtonShown));
            QVERIFY(window.children().indexOf(panel) >
                    window.children().indexOf(window.centralWidget()));

            Q_EMIT window.signal_QueueComponent(c);
            for (const MidiMessage& message : passingMessages(c))
                Q_EMIT window.signal_DistributeMIDI(message);
            QCOMPARE(panel->coverage().last().covered, 1.0F);
            Q_EMIT window.signal_Init();
            QCOMPARE(panel->coverage().last().covered, 0.0F);
        }
    }

    void closingQuitsOnlyTheProcessorsThread()
    {
        const int before = workerThreads();
        {
            MainWindow window;
            QTRY_COMPARE(workerThreads(), before + 2);
            window.close();
            QTRY_COMPARE(workerThreads(), before + 1);
        }
        QTRY_COMPARE(workerThreads(), before + 1); // the parser's runs on until the process ends
        { // a window that goes without a close event takes its processor's thread along too
            const MainWindow window;
        }
        QTRY_COMPARE(workerThreads(), before + 2);
    }
};

int main(int argc, char* argv[])
{
    fitCaptionsToLayout();
    QApplication application(argc, argv);
    // The font of a bare Debian desktop; the offscreen platform's own is larger.
    QApplication::setFont(QFont("Sans Serif", 9));
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_window.moc"
