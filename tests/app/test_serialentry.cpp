// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"
#include "tests/support/station.h"

#include <QApplication>
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
        QFile log(testlog::path(QCoreApplication::applicationDirPath(), "ABC 123"));
        log.remove();
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClicks(QApplication::focusWidget(), "ABC 123\r");
        const auto* field = window.findChild<QLineEdit*>("serialNumber");
        QCOMPARE(field->text(), QString("ABC 123"));
        QVERIFY(field->hasFocus() && !log.exists());

        window.findChild<QWidget*>("skipSensorButton")->setFocus();
        station::click(window, "startTest");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_4);
        QCOMPARE(field->text(), QString("4"));
    }

    void whileTheNoticeIsOpen_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("selected");
        QTest::addColumn<QString>("serial");
        QTest::newRow("Return") << "\r" << true << "old";
        QTest::newRow("Escape") << "\x1b" << true << "old";
        QTest::newRow("a blank presses OK") << " " << true << "old";
        QTest::newRow("the button") << "" << true << "old";
        QTest::newRow("Tab and Backspace stay with the notice") << "\t\b\r" << true << "old";
        QTest::newRow("a scan") << "o X-1/%2\r" << false << "o X-1/%2";
        QTest::newRow("a scan without suffix") << "12 " << false << "12 ";
        QTest::newRow("typed, then Escape") << "7\x1b" << false << "7";
        QTest::newRow("umlauts") << QString("\u00e4\u00d6\r") << false << QString("\u00e4\u00d6");
    }

    void whileTheNoticeIsOpen()
    {
        QFETCH(QString, keys);
        QFETCH(bool, selected);
        QFETCH(QString, serial);
        MainWindow window;
        window.show();
        auto* field = window.findChild<QLineEdit*>("serialNumber");
        field->setText("old");
        QTimer::singleShot(0, &window, [&keys] {
            const QPointer<QMessageBox> notice = station::openNotice();
            auto* button = notice->button(QMessageBox::Ok);
            QTest::keyClicks(button, keys);
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
