// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/panelplacement.h"

#include <QTest>

class TestPanelPlacement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Every panel's place in pixels, at the fader panel's width of 60.
    void places_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<QPoint>("place");
        const int faderX[] = {120, 210, 300, 390, 480, 570, 660, 750, 1005};
        const auto row = [](int component, int x, int y) {
            QTest::addRow("component %d", component) << component << QPoint(x, y);
        };
        for (int i = 0; i < 9; ++i) {
            row(i, faderX[i], 200);
            row(i + 9, faderX[i], 150);
        }
        for (int i = 0; i < 4; ++i) {
            row(18 + i, 30, 210 + 60 * i);
            row(40 + i, 130 + 180 * i, 10);
        }
        row(22, 876, 150);
        const int rowY[] = {200, 248, 296, 344, 392, 440};
        for (int i = 0; i < 6; ++i) {
            row(23 + 2 * i, 840, rowY[i]);
            row(24 + 2 * i, 915, rowY[i]);
        }
        row(35, 876, 15);
        row(36, 876, 85);
        row(37, 840, 50);
        row(38, 915, 50);
    }

    void places()
    {
        QFETCH(int, component);
        QFETCH(QPoint, place);
        QCOMPARE(panelPlace(component, 60).value(), place);
    }

    /// The places follow the width of a fader panel.
    void widerFaders()
    {
        QCOMPARE(panelPlace(7, 70).value(), QPoint(820, 200));
        QCOMPARE(panelPlace(8, 70).value(), QPoint(1085, 200));
        QCOMPARE(panelPlace(43, 70).value(), QPoint(730, 10));
        QCOMPARE(panelPlace(38, 70).value(), QPoint(985, 50));
    }

    void powerButtonHasNone() { QVERIFY(!panelPlace(39, 60).has_value()); }
};

QTEST_APPLESS_MAIN(TestPanelPlacement)
#include "test_panelplacement.moc"
