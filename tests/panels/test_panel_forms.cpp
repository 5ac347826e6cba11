// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "panels/zorvi_0908_button.h"
#include "panels/zorvi_0908_fader.h"
#include "panels/zorvi_0908_rotary.h"

#include <QDial>
#include <QFrame>
#include <QLabel>
#include <QRegularExpression>
#include <QSlider>
#include <QTest>

namespace
{
/// A style sheet without its comments and its indentation.
QString bareRules(QString sheet)
{
    sheet.remove(QRegularExpression(QStringLiteral("/\\*.*?\\*/"),
                                    QRegularExpression::DotMatchesEverythingOption));
    return sheet.simplified();
}

const QString sheetHead = QStringLiteral(
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

QStringList childNames(const QWidget& panel)
{
    QStringList names;
    for (const QObject* child : panel.children())
        names << child->objectName();
    return names;
}

void compareLabel(const QWidget& panel, int index, const QPoint& place)
{
    const auto* label = panel.findChild<QLabel*>(QStringLiteral("label_%1").arg(index));
    QVERIFY(label != nullptr);
    QCOMPARE(label->geometry(), QRect(place, QSize(10, 10)));
    QCOMPARE(label->text(), QString());
}

void compareFrame(const QWidget& panel, const QSize& size)
{
    const auto* frame = panel.findChild<QFrame*>(QStringLiteral("frame"));
    QCOMPARE(frame->geometry(), QRect(QPoint(0, 0), size));
    QCOMPARE(frame->frameShape(), QFrame::StyledPanel);
    QCOMPARE(frame->frameShadow(), QFrame::Raised);
}

void comparePanel(const QWidget& panel, const QString& name, const QSize& size,
                  const QString& verticalOutline)
{
    QCOMPARE(panel.objectName(), name);
    QCOMPARE(panel.windowTitle(), QStringLiteral("Form"));
    QCOMPARE(panel.size(), size);
    QCOMPARE(bareRules(panel.styleSheet()), sheetHead.arg(verticalOutline));
}

const QString outlined = QStringLiteral("border: 1px solid white; ");
} // namespace

class TestPanelForms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fader()
    {
        const Zorvi_0908_Fader panel(nullptr, -1, 0);
        // The fader's vertical slider has no white outline; the other panels' sheets have it.
        comparePanel(panel, QStringLiteral("Zorvi_0908_Fader"), {60, 270}, QString());
        compareFrame(panel, {60, 270});
        const auto* slider = panel.findChild<QSlider*>(QStringLiteral("verticalSlider"));
        QCOMPARE(slider->geometry(), QRect(10, 10, 22, 251));
        QCOMPARE(slider->maximum(), 127);
        QCOMPARE(slider->minimum(), 0);
        QCOMPARE(slider->pageStep(), 1);
        QCOMPARE(slider->orientation(), Qt::Vertical);

        QStringList stack{QStringLiteral("verticalSlider")};
        for (int i = 0; i < 13; ++i) {
            compareLabel(panel, i, {40, 250 - 20 * i});
            stack << QStringLiteral("label_%1").arg(i);
        }
        QCOMPARE(childNames(panel), stack << QStringLiteral("frame"));
    }

    void rotary()
    {
        const Zorvi_0908_Rotary panel(nullptr, -1, 40);
        comparePanel(panel, QStringLiteral("Zorvi_0908_Rotary"), {131, 81}, outlined);
        compareFrame(panel, {131, 81});
        const auto* dial = panel.findChild<QDial*>(QStringLiteral("dial"));
        QCOMPARE(dial->geometry(), QRect(0, 10, 131, 61));
        QCOMPARE(dial->maximum(), 127);
        for (int i = 0; i < 13; ++i)
            compareLabel(panel, i, {10 * i, 0});
        const QString stack = QStringLiteral("label_4 label_1 label_8 label_7 label_3 label_11 "
                                             "label_9 label_6 dial label_0 label_12 label_5 "
                                             "label_10 label_2 frame");
        QCOMPARE(childNames(panel), stack.split(QLatin1Char(' ')));
    }

    void button()
    {
        const Zorvi_0908_Button panel(nullptr, -1, 9);
        comparePanel(panel, QStringLiteral("Zorvi_0908_Button"), {60, 30}, outlined);
        compareFrame(panel, {60, 80});
        compareLabel(panel, 0, {10, 10});
        compareLabel(panel, 1, {40, 10});
        const QString stack = QStringLiteral("label_0 label_1 frame");
        QCOMPARE(childNames(panel), stack.split(QLatin1Char(' ')));
    }
};

QTEST_MAIN(TestPanelForms)
#include "test_panel_forms.moc"
