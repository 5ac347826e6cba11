// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/support/station.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

/// The serial number as an operator types it, or a scanner.
class TestSerialEntry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void atStart()
    {
        QDir logs(QCoreApplication::applicationDirPath() + "/Logs");
        for (const QString& old : logs.entryList(QDir::Files))
            QVERIFY(logs.remove(old));
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClicks(QApplication::focusWidget(), "ABC 123");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        const auto* field = window.findChild<QLineEdit*>("serialNumber");
        QCOMPARE(field->text(), QString("ABC 123"));
        QVERIFY(field->hasFocus());
        QCOMPARE(logs.entryList(QDir::Files), QStringList());

        window.findChild<QWidget*>("skipSensorButton")->setFocus();
        station::click(window, "startTest");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_4);
        QCOMPARE(field->text(), QString("4"));
    }

    void whileTheNoticeIsOpen_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("serial");
        QTest::addColumn<bool>("selected");
        QTest::newRow("Return") << "\r"
                                << "old" << true;
        QTest::newRow("Escape") << "\x1b"
                                << "old" << true;
        QTest::newRow("a blank presses OK") << " "
                                            << "old" << true;
        QTest::newRow("the button") << ""
                                    << "old" << true;
        QTest::newRow("Tab and deletion stay with the notice") << "\t\b\x7f\r"
                                                               << "old" << true;
        QTest::newRow("a scan") << "o X-1/%2\r"
                                << "o X-1/%2" << false;
        QTest::newRow("a scan without suffix") << "12 "
                                               << "12 " << false;
        QTest::newRow("typed, then Escape") << "7\x1b"
                                            << "7" << false;
        QTest::newRow("umlauts") << QString("\u00e4\u00d6\r") << QString("\u00e4\u00d6") << false;
    }

    void whileTheNoticeIsOpen()
    {
        QFETCH(QString, keys);
        QFETCH(QString, serial);
        QFETCH(bool, selected);
        MainWindow window;
        window.show();
        auto* field = window.findChild<QLineEdit*>("serialNumber");
        field->setText("old");
        QTimer::singleShot(0, &window, [&keys] {
            QPointer<QMessageBox> notice = station::openNotice();
            auto* button = notice->button(QMessageBox::Ok);
            const QMap<QChar, int> controls{{'\r', Qt::Key_Return},
                                            {'\x1b', Qt::Key_Escape},
                                            {'\t', Qt::Key_Tab},
                                            {'\b', Qt::Key_Backspace},
                                            {'\x7f', Qt::Key_Delete}};
            for (const QChar c : keys)
                QTest::sendKeyEvent(QTest::Click, button,
                                    Qt::Key(controls.value(c, c.toUpper().unicode())), QString(c),
                                    Qt::NoModifier);
            if (notice != nullptr && notice->isVisible())
                QTest::mouseClick(button, Qt::LeftButton);
        });
        const QSignalSpy restarts(&window, SIGNAL(signal_Init()));
        window.slot_TestComplete();
        QCOMPARE(restarts.count(), 1);
        QCOMPARE(field->text(), serial);
        QTRY_VERIFY(field->hasFocus());
        QCOMPARE(field->selectedText(), selected ? serial : QString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_9); // the next scan, or a slow hand
        QCOMPARE(field->text(), selected ? QString("9") : serial + "9");
    }
};

QTEST_MAIN(TestSerialEntry)
#include "test_serialentry.moc"
