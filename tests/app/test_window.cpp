// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/captionsize.h"
#include "app/mainwindow.h"
#include "panels/componentpanel.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

namespace
{
const QString box =
    QStringLiteral("QFrame{background:none; border: 1px solid black;}\nQLabel{border: none;}");
const QString large = QStringLiteral("QLabel{font-size: 16pt;}");

QString textOf(const QWidget* widget)
{
    return widget->property("text").toString();
}

ComponentPanel* panelOf(const MainWindow& window, int component)
{
    for (auto* panel : window.findChildren<ComponentPanel*>())
        if (panel->component() == component)
            return panel;
    return nullptr;
}
/// The process's threads that run a plain QThread, by the name that Qt gives them.
int workerThreads()
{
    int count = 0;
    for (const auto& task : QDir(QStringLiteral("/proc/self/task")).entryInfoList(QDir::Dirs)) {
        QFile name(task.filePath() + QStringLiteral("/comm"));
        if (name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "QThread")
            ++count;
    }
    return count;
}
} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QCoreApplication::setApplicationName(QStringLiteral("zorvi_assembly_test")); }

    void form_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("style");
        const auto row = [](const char* name, const char* type, const char* parent, QRect geometry,
                            const char* text = "", const QString& style = QString()) {
            QTest::newRow(name) << QByteArray(type) << QString::fromLatin1(parent) << geometry
                                << QString::fromLatin1(text) << style;
        };
        row("frame", "QFrame", "centralWidget", {10, 485, 1061, 111}, "",
            QStringLiteral("QFrame{background: white;}"));
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
            QStringLiteral("QFrame{background: black; border-radius: 20px;}"));
    }

    void form()
    {
        QFETCH(QByteArray, type);
        QFETCH(QString, parent);
        QFETCH(QRect, geometry);
        QFETCH(QString, text);
        QFETCH(QString, style);
        const MainWindow window;
        const auto* parentWidget = parent == QLatin1String("centralWidget")
                                       ? window.centralWidget()
                                       : window.centralWidget()->findChild<QWidget*>(parent);
        const auto* widget = parentWidget->findChild<QWidget*>(
            QString::fromLatin1(QTest::currentDataTag()), Qt::FindDirectChildrenOnly);
        QVERIFY(widget != nullptr);
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
        QCOMPARE(window.objectName(), QStringLiteral("MainWindow"));
        QCOMPARE(window.size(), QSize(1086, 602));
        QCOMPARE(window.windowTitle(), QStringLiteral("0908 Zorvi Assembly Test"));
        QCOMPARE(window.centralWidget()->objectName(), QStringLiteral("centralWidget"));
        const auto* audio = window.findChild<QCheckBox*>(QStringLiteral("audioOnOff"));
        QVERIFY(audio->isChecked());
        QCOMPARE(audio->font().pointSize(), 11);
        const auto* serial = window.findChild<QLineEdit*>(QStringLiteral("serialNumber"));
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
        QCOMPARE(meta->methodCount() - meta->methodOffset(), expected.size());
        for (int i = 0; i < expected.size(); ++i)
            QCOMPARE(meta->method(meta->methodOffset() + i).methodSignature(), expected.at(i));
    }

    void marker_data()
    {
        QTest::addColumn<QString>("applicationName");
        QTest::addColumn<bool>("channelButtonShown");
        QTest::newRow("none") << QStringLiteral("zorvi_assembly_test") << false;
        QTest::newRow("at the end") << QStringLiteral("zorvi_assembly_test_TARVEK") << true;
        QTest::newRow("in the middle") << QStringLiteral("aTARVEKb") << true;
        QTest::newRow("lower case") << QStringLiteral("zorvi_assembly_test_tarvek") << false;
    }

    /// Which panels are shown, where they lie, and that they lie above the backdrop.
    void marker()
    {
        QFETCH(QString, applicationName);
        QFETCH(bool, channelButtonShown);
        QCoreApplication::setApplicationName(applicationName);
        const MainWindow window;
        QCOMPARE(window.findChildren<ComponentPanel*>().size(), 44);
        for (int c = 0; c < 44; ++c) {
            const auto* panel = panelOf(window, c);
            QVERIFY2(panel != nullptr, qPrintable(QString::number(c)));
            QCOMPARE(panel->parentWidget(), static_cast<const QWidget*>(&window));
            QCOMPARE(panel->isHidden(), c == 39 || (c == 18 && !channelButtonShown));
            QVERIFY(window.children().indexOf(const_cast<ComponentPanel*>(panel)) >
                    window.children().indexOf(window.centralWidget()));
        }
        QCOMPARE(panelOf(window, 0)->pos(), QPoint(120, 200));
        QCOMPARE(panelOf(window, 8)->pos(), QPoint(1005, 200));
        QCOMPARE(panelOf(window, 18)->pos(), QPoint(30, 210));
        QCOMPARE(panelOf(window, 38)->pos(), QPoint(915, 50));
        QCOMPARE(panelOf(window, 39)->pos(), QPoint(0, 0));
        QCOMPARE(panelOf(window, 43)->pos(), QPoint(670, 10));
    }

    void armedWhenFirstShown()
    {
        MainWindow window;
        window.show();
        const auto* frame = panelOf(window, 0)->findChild<QFrame*>(QStringLiteral("frame"));
        QCOMPARE(frame->styleSheet(), QStringLiteral("QFrame{border:none; background: blue;}"));
    }

    /// Hidden panels hear every broadcast like the others.
    void hiddenPanelsAreWired()
    {
        MainWindow window;
        for (const int component : {18, 39}) {
            auto* panel = panelOf(window, component);
            Q_EMIT window.signal_QueueComponent(component);
            const int channel = 2;
            Q_EMIT window.signal_DistributeMIDI(MidiMessage::noteOn(channel, 30, juce::uint8(127)));
            QCOMPARE(panel->coverage().at(1).covered, 1.0F);
            Q_EMIT window.signal_Init();
            QCOMPARE(panel->coverage().at(1).covered, 0.0F);
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
    QApplication::setFont(QFont(QStringLiteral("Sans Serif"), 9));
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_window.moc"
