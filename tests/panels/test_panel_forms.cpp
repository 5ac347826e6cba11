// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"

#include <QAbstractSlider>
#include <QFrame>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>

namespace
{
/// A style sheet without its comments and its indentation.
QString bareRules(QString sheet)
{
    sheet.remove(QRegularExpression("/\\*.*?\\*/", QRegularExpression::DotMatchesEverythingOption));
    return sheet.simplified();
}

/// The sheet of every panel; %1 is what outlines a vertical slider.
const QString sheet = QStringLiteral(
    "QToolButton { font: 25 9pt \"Input Sans\"; color: black; background: white; "
    "border: 1px solid black; border-radius: 4px; } "
    "QToolButton:pressed { background: gray; color: black; } "
    "QSlider::groove:vertical { background: black; %1position: absolute; left: 4px; right: 4px; } "
    "QSlider::handle:vertical { height: 4px; background: white; margin: 0 0px; } "
    "QSlider::add-page:vertical { background: white; } "
    "QSlider::sub-page:vertical { background: black; %1} "
    "QSlider::groove:horizontal { background: black; border: 1px solid white; "
    "position: absolute; top: 4px; bottom: 4px; } "
    "QSlider::handle:horizontal { height: 4px; background: white; margin: 0 0px; } "
    "QSlider::add-page:horizontal { background: rgba(75,75,75,255); } "
    "QSlider::sub-page:horizontal { background: white; border: 1px solid white; } "
    "QFrame { background: gray; } "
    "QLabel { font: 25 9pt \"Input Sans\"; color: white; background: black; "
    "border: 1px solid black; } "
    "QAbstractSpinBox { font: 25 9pt \"Input Sans\"; color: white; background: black; "
    "border: 1px solid white; text-align: right; }");
} // namespace

class TestPanelForms : public QObject
{
    Q_OBJECT

    Zorvi_0908_Fader fader{nullptr, -1, 0};
    Zorvi_0908_Button button{nullptr, -1, 9};
    Zorvi_0908_Rotary rotary{nullptr, -1, 40};

private Q_SLOTS:
    void forms_data()
    {
        QTest::addColumn<QWidget*>("panel");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("frameSize");
        QTest::addColumn<QRect>("display");
        QTest::addColumn<QPoint>("firstLabel");
        QTest::addColumn<QPoint>("labelStep");
        QTest::addColumn<QString>("outline");
        QTest::addColumn<QString>("stack"); // from the bottom to the top
        const QString outlined = "border: 1px solid white; ";
        QTest::newRow("Zorvi_0908_Fader")
            << static_cast<QWidget*>(&fader) << QSize(60, 270) << QSize(60, 270)
            << QRect(10, 10, 22, 251) << QPoint(40, 250) << QPoint(0, -20)
            << QString() // this one has no white outline
            << "verticalSlider label_0 label_1 label_2 label_3 label_4 label_5 label_6 label_7 "
               "label_8 label_9 label_10 label_11 label_12 frame";
        QTest::newRow("Zorvi_0908_Button")
            << static_cast<QWidget*>(&button) << QSize(60, 30) << QSize(60, 80) << QRect()
            << QPoint(10, 10) << QPoint(30, 0) << outlined << "label_0 label_1 frame";
        QTest::newRow("Zorvi_0908_Rotary")
            << static_cast<QWidget*>(&rotary) << QSize(131, 81) << QSize(131, 81)
            << QRect(0, 10, 131, 61) << QPoint(0, 0) << QPoint(10, 0) << outlined
            << "label_4 label_1 label_8 label_7 label_3 label_11 label_9 label_6 dial label_0 "
               "label_12 label_5 label_10 label_2 frame";
    }

    void forms()
    {
        QFETCH(QWidget*, panel);
        QFETCH(QSize, size);
        QFETCH(QSize, frameSize);
        QFETCH(QRect, display);
        QFETCH(QPoint, firstLabel);
        QFETCH(QPoint, labelStep);
        QFETCH(QString, outline);
        QFETCH(QString, stack);
        QCOMPARE(panel->objectName(), QString(QTest::currentDataTag()));
        QCOMPARE(panel->windowTitle(), QStringLiteral("Form"));
        QCOMPARE(panel->size(), size);
        QCOMPARE(bareRules(panel->styleSheet()), sheet.arg(outline));
        QStringList names;
        for (const QObject* child : panel->children())
            names << child->objectName();
        QCOMPARE(names.join(' '), stack);

        const auto* frame = panel->findChild<QFrame*>("frame");
        QCOMPARE(frame->geometry(), QRect(QPoint(0, 0), frameSize));
        QCOMPARE(frame->frameShape(), QFrame::StyledPanel);
        QCOMPARE(frame->frameShadow(), QFrame::Raised);
        for (int i = 0; i < names.filter("label").size(); ++i) {
            const auto* label = panel->findChild<QLabel*>(QString("label_%1").arg(i));
            QCOMPARE(label->geometry(), QRect(firstLabel + i * labelStep, QSize(10, 10)));
            QCOMPARE(label->text(), QString());
        }
        if (const auto* control = panel->findChild<QAbstractSlider*>()) {
            QCOMPARE(control->geometry(), display);
            QCOMPARE(control->minimum(), 0);
            QCOMPARE(control->maximum(), 127);
            QCOMPARE(control->pageStep(), panel == &fader ? 1 : 10); // 10 is Qt's own
            QCOMPARE(control->orientation(), panel == &fader ? Qt::Vertical : Qt::Horizontal);
        }
    }
};

QTEST_MAIN(TestPanelForms)
#include "test_panel_forms.moc"
