// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// The station as its own main() builds it: the tests run in its event loop.

#include "tests/support/station.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>

namespace
{
/// The widgets with what their forms set, but for style sheets, from the bottom of the stack to the
/// top; of each kind of panel the first one in full; the station's own signals and slots in the
/// order of the meta-object.
void describe(QTextStream& out, const QWidget& widget, const QString& indent)
{
    const QMetaObject& meta = *widget.metaObject();
    const auto* panel = qobject_cast<const ComponentPanel*>(&widget);
    const QRect area = widget.geometry();
    out << indent << meta.className() << ' ' << widget.objectName() << ' ' << area.width() << 'x'
        << area.height();
    if (widget.isWindow())
        out << ' ' << widget.font().family() << " at " << widget.logicalDpiY() << " dpi";
    else
        out << " at " << area.x() << ',' << area.y() << (widget.isHidden() ? " hidden" : "");
    if (panel != nullptr)
        out << " component " << panel->getComponentNum();
    const bool isShort = panel != nullptr && roster::indexInKind(panel->getComponentNum()) != 0;
    if (!widget.property("text").toString().isEmpty())
        out << ' ' << widget.font().pointSize() << "pt";
    for (const char* name :
         {"windowTitle", "text", "checked", "frameShape", "frameShadow", "minimum", "maximum",
          "pageStep", "orientation", "maxLength", "inputMask", "alignment", "readOnly"})
        if (const QVariant value = widget.property(name);
            !isShort && !value.toString().isEmpty() && value != false)
            out << ' ' << name << '=' << value.toString().simplified();
    out << '\n';
    if (isShort)
        return;
    const QMetaObject& qts =
        widget.isWindow() ? QMainWindow::staticMetaObject : QWidget::staticMetaObject;
    if (panel != nullptr || widget.isWindow())
        for (int i = qts.methodCount(); i < meta.methodCount(); ++i)
            out << indent << "  " << meta.method(i).methodSignature() << " ["
                << meta.method(i).parameterNames().join(", ") << "]\n";
    for (const QObject* child : widget.children())
        if (child->isWidgetType() && !child->objectName().startsWith("qt_"))
            describe(out, *static_cast<const QWidget*>(child), indent + "  ");
}
} // namespace

class TestMain : public QObject
{
    Q_OBJECT

    MainWindow* window = nullptr;
    QLineEdit* field = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        window = qobject_cast<MainWindow*>(QApplication::topLevelWidgets().value(0));
        if (window == nullptr)
            QFAIL("the station has no window");
        QVERIFY(QTest::qWaitForWindowActive(window));
        QVERIFY(window->qt_metacast("MidiInputCallback") != nullptr);
        field = window->findChild<QLineEdit*>("serialNumber");
    }

    void widgets()
    {
        QFile file(QCoreApplication::applicationDirPath() + "/window.txt");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QTextStream out(&file);
        describe(out, *window, {});
        out.flush();
        QCOMPARE(QProcess::execute("diff", {"-u", WINDOW_AS_BUILT, file.fileName()}), 0);
    }

    /// The desktop's theme is dark, or becomes so: the window stays as it is, every text readable.
    void darkDesktop()
    {
        QApplication::setCursorFlashTime(0);
        const QImage light = window->grab().toImage();
        const QFont font = QApplication::font(); // also that of the notice
        const QPalette palette = QApplication::palette();
        const auto setPalette = [] {
            QApplication::setPalette(QPalette(Qt::darkGray, Qt::black));
            QApplication::setPalette(QPalette(Qt::darkGray, Qt::black), "QLabel");
        };
        const auto setFont = [] { QApplication::setFont(QFont("Serif", 14)); };
        const auto setStyle = [] { QApplication::setStyle("Windows"); };
        using Changes = QVector<std::function<void()>>;
        for (const Changes& changes :
             {Changes{setStyle, setPalette, setFont}, Changes{setFont, setPalette, setStyle}}) {
            for (const auto& change : changes)
                change();
            QTRY_COMPARE(window->grab().toImage(), light);
            QTRY_COMPARE(QApplication::font(), font);
            QTRY_COMPARE(QApplication::palette(), palette);
        }
        QCOMPARE(light.pixelColor(window->rect().bottomLeft()), QColor(0xef, 0xef, 0xef));
    }

    /// The operator types or scans without a click: at the start, and after "Start Test".
    void typedSerial()
    {
        QFile log(QCoreApplication::applicationDirPath() + "/Logs/ZORVI_ABC 123.txt");
        log.remove();
        QTest::keyClicks(QApplication::focusWidget(), "ABC 123\r");
        QCOMPARE(field->text(), QString("ABC 123"));
        QVERIFY(field->hasFocus() && !log.exists());
        window->findChild<QWidget*>("skipSensorButton")->setFocus();
        station::click(*window, "startTest");
        QTest::keyClicks(QApplication::focusWidget(), "4");
        QCOMPARE(field->text(), QString("4"));
    }

    void whileTheNoticeIsOpen_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("serial");
        const std::tuple<const char*, QString, QString> rows[] = {
            {"Return", "\r", "old"},
            {"a blank presses OK", " ", "old"},
            {"the button", "", "old"},
            {"Tab stays with the notice", "\t\r", "old"},
            {"a scan", "o X-1/%2\r", "o X-1/%2"},
            {"a scan without suffix", "12 ", "12 "},
            {"umlauts", "\u00e4\u00d6\r", "\u00e4\u00d6"},
        };
        for (const auto& [name, keys, serial] : rows)
            QTest::newRow(name) << keys << serial;
    }

    void whileTheNoticeIsOpen()
    {
        QFETCH(QString, keys);
        QFETCH(QString, serial);
        const bool isSelected = serial == "old"; // nothing was typed
        field->setText("old");
        QTimer::singleShot(0, window, [&] {
            const QPointer<QMessageBox> notice = station::openNotice();
            auto* button = notice->button(QMessageBox::Ok);
            QTest::keyClick(window, 'x');                  // not into the notice
            QTest::keyClick(button, 'x', Qt::AltModifier); // a command
            for (const QChar c : keys)
                QTest::sendKeyEvent(QTest::Click, button,
                                    c < 128 ? QTest::asciiToKey(c.toLatin1()) : Qt::Key_unknown,
                                    QString(c), Qt::NoModifier);
            if (notice != nullptr && notice->isVisible())
                QTest::mouseClick(button, Qt::LeftButton);
        });
        const QSignalSpy restarts(window, SIGNAL(signal_Init()));
        window->slot_TestComplete();
        QCOMPARE(restarts.count(), 1);
        QCOMPARE(field->text(), serial);
        QTRY_VERIFY(field->hasFocus());
        QCOMPARE(field->selectedText(), isSelected ? serial : QString());
        QTest::keyClicks(QApplication::focusWidget(), "9"); // the next scan, or a slow hand
        QCOMPARE(field->text(), isSelected ? QString("9") : serial + "9");
    }

    /// The installed station without a sound: it names the file and does not start.
    void missingSound()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("zorvi_assembly_test");
        QVERIFY(QFile::copy(ZORVI_STATION, path));
        station::Program program(path, {});
        QCOMPARE(program.status(), 1); // no message box waits for an operator
        QCOMPARE(QString(program.readAllStandardError()).count(folder.path()), 1);
    }
};

namespace
{
/// Called once the station's main() has made its application object.
void begin()
{
    QTimer::singleShot(0, qApp, [] {
        TestMain test;
        QCoreApplication::exit(QTest::qExec(&test, QCoreApplication::arguments()));
    });
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)

#include "test_main.moc"
