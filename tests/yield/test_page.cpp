// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"
#include "yield/page/figuretext.h"
#include "yield/page/page.h"

#include <QBuffer>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

namespace
{
/// A report in which no two figures that could be taken for each other are equal.
Report sample()
{
    Report report;
    report.databaseIsEmpty = false;
    report.request.now = QDateTime({2026, 11, 18}, {8, 0});
    report.request.without = QStringList{"GOLD*"};
    report.leftOut = 2;
    report.ages = {{"One", "2026-11-17T08:30:00", 84600},
                   {"Two", "2026-11-15T14:10:00", 236700},
                   {"Three", {}, -1},
                   {"Four", "2026-11-17T06:59:00", 90060},
                   {"Five", "2026-11-18T06:58:20", 3700}};
    report.total = {200, 260, 160, 180, 6};
    report.days = {{{2026, 11, 16}, {120, 150, 104, 110, 4}}, // none on the 17th
                   {{2026, 11, 18}, {80, 110, 56, 70, 2}}};
    report.offAxis.units = 3;
    report.recentDays = {{{2026, 11, 18}, {80, 110, 56, 70, 2}, {53, 73}},
                         {{2026, 11, 17}, {}, {}}};
    report.attemptsByNumber = {{200, 160, 6}, {50, 18, 1}, {10, 2, 0}};
    report.falseFailures = {43, 20, 12};
    report.stations = {{"One", {150, 170, 132, 140, 5}, {105, 131}, {}},
                       {"Two", {50, 90, 28, 40, 1}, {31, 47}, {}}};
    report.stations[0].missed[3] = 9;
    report.stations[1].missed[9] = 4;
    const int missed[] = {0, 1, 3, 20, 8, 12}; // by control: none, 0.5 %, 1.5 %, 10 %, 4 %, 6 %
    for (std::size_t c = 0; c < report.controls.size(); ++c) {
        report.controls[c].units = c == 18 || c == 39 ? 0 : 200;
        report.controls[c].missed = c < 6 ? missed[c] : 0;
        report.controls[c].missedBands = QVector<int>(c < 9 || c > 38 ? 13 : 2);
    }
    report.controls[40].missed = 60;
    report.controls[40].missedBands[12] = 58;
    report.controls[3].missedBands[0] = 20;
    report.controls[10].endedHere = 5;
    report.controls[42].endedHere = 1;
    const BandMarks all = ~BandMarks();
    const BandMarks ended = all >> 26; // without its last two controls
    BandMarks open = ended;
    for (const auto& band :
         {bandmarks::Band{3, 0}, {3, 1}, {3, 12}, {9, 1}, {10, 0}, {11, 0}, {12, 0}})
        open.reset(bandmarks::markIndex(band.componentNum, band.band));
    const auto attempt = [](const char* station, const char* serial, const char* time,
                            const BandMarks& marks) {
        return Attempt{station, true, serial, time, marks};
    };
    report.openUnits = {{{}, attempt("Two", "open 1", "2026-11-18T07:15:59", open), 3}};
    report.repeatedUnits = {{attempt("One", "again", "2026-11-16T06:00:00", all >> 1),
                             attempt("Two", "again", "2026-11-18T07:00:00", all), 4},
                            {attempt("Two", "often", "2026-11-17T06:00:00", all),
                             attempt("One", "often", "2026-11-17T07:00:00", ended), 2}};
    report.repeatedUnitCount = 42;
    return report;
}

QString written(const Report& report)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return page::write(report, buffer) ? QString::fromUtf8(buffer.data()).replace(QChar::Nbsp, ' ')
                                       : "not written";
}

QVector<QDomElement> elements(const QDomElement& parent, const QString& name)
{
    QVector<QDomElement> all;
    const QDomNodeList list = parent.elementsByTagName(name);
    for (int i = 0; i < list.size(); ++i)
        all.append(list.at(i).toElement());
    return all;
}

/// The table or the picture with that label.
QDomElement labelled(const QString& page, const QString& name, const QString& label)
{
    QDomDocument document;
    document.setContent(page);
    for (const QDomElement& each : elements(document.documentElement(), name))
        if (each.attribute("aria-label") == label)
            return each;
    return {};
}

QVector<QDomElement> children(const QDomElement& parent)
{
    QVector<QDomElement> all;
    for (auto child = parent.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        all.append(child);
    return all;
}

QStringList tableLines(const QString& page, const QString& label)
{
    QStringList lines;
    for (const QDomElement& row : elements(labelled(page, "div", label), "tr")) {
        QStringList cells;
        for (const QDomElement& cell : children(row))
            cells << cell.text();
        lines << cells.join('|');
    }
    return lines;
}

/// The elements of a picture that have that class.
QVector<QDomElement> shapes(const QDomElement& picture, const QString& cssClass)
{
    QVector<QDomElement> found;
    for (const QDomElement& shape : children(picture))
        if (shape.attribute("class").split(' ').contains(cssClass))
            found.append(shape);
    return found;
}

double number(const QDomElement& shape, const QString& attribute)
{
    return shape.attribute(attribute).toDouble();
}

QVector<QPointF> points(const QDomElement& shape)
{
    QVector<QPointF> all;
    for (const QString& pair : shape.attribute("points").split(' '))
        all.append({pair.section(',', 0, 0).toDouble(), pair.section(',', 1, 1).toDouble()});
    return all;
}

/// What headless Chromium says on its console, and makes of a page, with more options.
QString browse(const QString& file, const QStringList& options)
{
    const QTemporaryDir profile;
    QProcess browser;
    browser.start(QStandardPaths::findExecutable("chromium"),
                  QStringList{"--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
                              "--disable-background-networking", "--disable-component-update",
                              "--disable-sync", "--user-data-dir=" + profile.path()} +
                      options +
                      QStringList{QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded)});
    browser.waitForFinished(100000);
    return QString::fromUtf8(browser.readAllStandardError() + browser.readAllStandardOutput());
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0;
}
} // namespace

class TestPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void columns_data();
    void columns();
    void texts();
    void yieldsAgainstTheirLimits();
    void missesAddUp();
    void barsAndMarks();
    void hostileTexts();
    void aBrowserShowsThePage();
    void paperIsBounded();
};

void TestPage::columns_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("Newest log of each station")
        << QStringList{"Station|Newest log|Age",
                       "One|Tue 17 Nov 08:30|23 hours",
                       "Two|nothing since Sun 15 Nov 14:10|2 days",
                       "Three|no log yet|–",
                       "Four|nothing since Tue 17 Nov 06:59|25 hours",
                       "Five|Wed 18 Nov 06:58|61 minutes"};
    const QString yields = "First-pass yield|Limits|Final yield so far|Ended early";
    const QString wednesday = "70.0 % (56 of 80)|within 66.3 % to 91.3 %|87.5 % (70 of 80)|2";
    QTest::newRow("The last days") << QStringList{"First tested|Units|" + yields,
                                                  "Today so far, Wed 18 Nov 2026|80|" + wednesday,
                                                  "Yesterday, Tue 17 Nov 2026|0|–|–|–|–"};
    QTest::newRow("Units not complete")
        << QStringList{"Serial number|Last tested|Station|Attempts|What the last attempt missed",
                       "open 1|2026-11-18 07:15|Two|3|ended early at Rotary 2; Fader 3: 0 to 19, "
                       "120 to 127; Button 0: pressed; Button 1: released; and 2 more"};
    QTest::newRow("Yield by station")
        << QStringList{"Station|Units|Attempts|Picture|" + yields + "|Most missed",
                       "One|150|170||88.0 % (132 of 150)|▲ above 70.0 % to 87.3 %|93.3 % (140 of "
                       "150)|5|Fader 3, 9 units",
                       "Two|50|90||56.0 % (28 of 50)|▼ below 62.0 % to 94.0 %|80.0 % (40 of 50)|1|"
                       "Button 0, 4 units"};
    QTest::newRow("Where first attempts ended early")
        << QStringList{"Ended at|Component|First attempts|Picture", "Button 1|10|83.3 % (5 of 6)|",
                       "Rotary 2|42|16.7 % (1 of 6)|"};
    QTest::newRow("Attempts by number") << QStringList{
        "Attempt|Attempts|Complete|Picture|Ended early", "1st|200|80.0 % (160 of 200)||6",
        "2nd|50|36.0 % (18 of 50)||1", "3rd|10|20.0 % (2 of 10)||0"};
    QTest::newRow("Units tested more than once")
        << QStringList{"Serial number|Attempts|First attempt|First station|First result|"
                       "Last attempt|Last station|Last result",
                       "again|4|2026-11-16 06:00|One|not complete|2026-11-18 07:00|Two|complete",
                       "often|2|2026-11-17 06:00|Two|complete|2026-11-17 07:00|One|ended early"};
    QTest::newRow("What was missed") << QStringList{
        "Control|Missed by|Of all misses|Added up", "Rotary 0|30.0 % (60 of 200)|57.7 %|57.7 %",
        "Fader 3|10.0 % (20 of 200)|19.2 %|76.9 %", "Fader 5|6.0 % (12 of 200)|11.5 %|88.5 %",
        "Fader 4|4.0 % (8 of 200)|7.7 %|96.2 %",    "Fader 2|1.5 % (3 of 200)|2.9 %|99.0 %",
        "Fader 1|0.5 % (1 of 200)|1.0 %|100 %"};
}

void TestPage::columns()
{
    QFETCH(QStringList, lines);
    QCOMPARE(tableLines(written(sample()), QTest::currentDataTag()), lines);
}

void TestPage::texts()
{
    // Where elements begin and end there is a stroke.
    const QString text = written(sample())
                             .replace(QRegularExpression("\\s*<[^>]*>[\\s|]*"), "|")
                             .replace(QRegularExpression("\\|+"), "|")
                             .replace(QRegularExpression("\\s+"), " ");
    const QString parts =
        "first tested at any time, at all stations, without GOLD*: 2 units left out. Made on "
        "2026-11-18 08:00.;|20 units whose last;And 19 more;"
        "|42 units, most;And 40 more;|3 units with a first attempt before;line from 50 % to 100 %;"
        "|Units|200|serial;|Attempts|260|1.30 a unit|;|First-pass yield|80.0 %|160 of 200 units|;"
        "|Final yield so far|90.0 %|180 of 200 units|;|False failures|27.9 %|12 of 43 failures|;"
        "|Ended early|3.0 %|6 of 200 first attempts|;Failed attempts: 43. ;"
        "same station: 46.5 % (20 of 43). ;|Fader 3|3|10.0 % (20 of 200)|;"
        "|Button 9|18|not tested here|;|Button 30|39|never tested|;|Rotary 0|120 to 127|58|;"
        "|Fader 3|0 to 9|20|;within 68.3 % to 90.0 %|91.7 % (110 of 120)|4|;"
        "|Rotary 0 (component 40): missed at the first attempt by 30.0 % (60 of 200)|";
    for (const QString& part : parts.split(';'))
        QVERIFY2(text.contains(part), qPrintable(part));
    // Only all are 100 %, and only none 0 %.
    QCOMPARE(figuretext::percent(99999, 100000), QString("99.9\u00a0%"));
    QCOMPARE(figuretext::percent(1, 100000), QString("0.1\u00a0%"));
    QCOMPARE(figuretext::share(1234, 1234), QString("100\u00a0% (1,234 of 1,234)"));
    QCOMPARE(figuretext::percent(0, 0), QString("–"));
    Report none = sample();
    none.total = {};
    none.request.since = none.request.until = {2026, 11, 9};
    none.request.station = "One";
    QVERIFY(written(none).simplified().contains(
        "first tested from 2026-11-09 to 2026-11-09, at station \"One\", without GOLD*"));
    QVERIFY(written(none).contains("There are no such units"));
    none.databaseIsEmpty = true;
    QVERIFY(written(none).contains("There are no attempts in the"));
    QFile full("/dev/full");
    QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && !page::write(none, full));
}

void TestPage::yieldsAgainstTheirLimits()
{
    const QString page = written(sample());
    const QDomElement picture = labelled(page, "svg", "First-pass yield and units by day");
    const auto labels = shapes(picture, "end");
    QVERIFY(labels.at(0).text() == "100 %" && labels.at(4).text() == "60 %");
    const double top = number(labels.at(0), "y") - 4;
    const double bottom = number(labels.at(4), "y") - 4;
    const auto percentAt = [&](double y) { return 100 - 40 * (y - top) / (bottom - top); };
    const auto is = [](double a, double b) { return qAbs(a - b) < 0.1; };
    const auto limits = shapes(picture, "limit");
    QCOMPARE(shapes(picture, "trend").size(), 2); // no line across the day without units
    QCOMPARE(limits.size(), 4);
    const Limits first = limitsOf(120, sample().total);
    const Limits last = limitsOf(80, sample().total);
    QVERIFY(is(percentAt(points(limits.at(0)).first().y()), 100.0 * first.low / 120));
    QVERIFY(is(percentAt(points(limits.at(3)).last().y()), 100.0 * last.high / 80));
    QVERIFY(is(percentAt(points(shapes(picture, "centre").first()).first().y()), 80));
    QVERIFY(is(percentAt(number(shapes(picture, "dot").first(), "cy")), 100.0 * 104 / 120));
    // A station below its limits has another mark, at its yield.
    const QDomElement station =
        labelled(page, "svg", "First-pass yield 56.0 % (28 of 50), limits 62.0 % to 94.0 %");
    QCOMPARE(shapes(station, "dot").size(), 0);
    const QPointF tip = points(shapes(station, "below").first()).first();
    const auto line = points(shapes(station, "grid").first());
    const double share = (tip.x() - line.first().x()) / (line.last().x() - line.first().x());
    QVERIFY(is(50 + 50 * share, 56) && tip.y() > line.first().y());
    const auto middle = points(shapes(station, "centre").first()).first().x();
    const auto low = points(shapes(station, "limit").first()).first().x();
    QVERIFY(low > tip.x() && is((low - tip.x()) / (62 - 56), (middle - tip.x()) / (80 - 56)));
}

void TestPage::missesAddUp()
{
    const QDomElement picture =
        labelled(written(sample()), "svg", "Units that missed each control, most missed first");
    const auto bars = shapes(picture, "bar");
    const auto line = points(shapes(picture, "trend").first());
    QCOMPARE(bars.size(), 6);
    QCOMPARE(line.size(), 6);
    const double bottom = number(bars.first(), "y") + number(bars.first(), "height");
    double sum = 0;
    for (int i = 0; i < bars.size(); ++i) {
        sum += number(bars.at(i), "height");
        QVERIFY(qAbs(bottom - sum - line.at(i).y()) < 0.1);
        QVERIFY(line.at(i).x() > number(bars.at(i), "x"));
    }
    QVERIFY(qAbs(number(bars.first(), "height") / sum - 60.0 / 104) < 0.001);
}

void TestPage::barsAndMarks()
{
    Report report = sample();
    report.attemptsByNumber.fill({1, 1, 0}, Report::maxNumbers);
    report.repeatedUnits[1].last.serial.clear();
    const QString page = written(report);
    QVERIFY(tableLines(page, "Attempts by number").last().startsWith("10th and later|"));
    QVERIFY(tableLines(page, "Units tested more than once").last().startsWith("(no serial "));
    const auto bar = [&](const QString& picture, int i, const QString& size) {
        return number(shapes(labelled(page, "svg", picture), "bar").value(i), size);
    };
    const double most = bar("Missed bands of Rotary 0", 12, "height");
    QVERIFY(most > 0 && bar("Missed bands of Rotary 0", 0, "height") == 0);
    QCOMPARE(bar("Missed bands of Fader 3", 0, "height"), most);
    QCOMPARE(qRound(bar("83.3 % (5 of 6)", 0, "width") / bar("16.7 % (1 of 6)", 0, "width")), 5);
    QStringList bad;
    for (const QDomElement& cell : elements(labelled(page, "body", {}), "td"))
        if (cell.attribute("class") == "bad")
            bad << cell.text().section(' ', 0, 1);
    QCOMPARE(bad.join(','),
             QString("nothing since,no log,nothing since,▼ below,not complete,ended early"));
}

void TestPage::hostileTexts()
{
    const QString hostile =
        "</td><script>console.log('run')</script>&amp;\"\u202e\x01\uffff\ufffe" +
        QString(QChar(0xd800)) + "\t\U0001f600";
    Report report = sample();
    report.openUnits[0].last.serial = hostile;
    report.repeatedUnits[0].last.serial = hostile;
    report.stations[0].name = hostile;
    report.ages[0].name = hostile;
    report.request.without = QStringList{hostile};
    const QString page = written(report);
    const QString shown = "</td><script>console.log('run')</"
                          "script>&amp;\"\ufffd\ufffd\ufffd\ufffd?\ufffd\U0001f600";
    for (const char* const label : {"Units not complete", "Units tested more than once",
                                    "Yield by station", "Newest log of each station"})
        QCOMPARE(tableLines(page, label).value(1).section('|', 0, 0), shown);
    QVERIFY(page.trimmed().endsWith("</html>"));
    // Nothing is fetched: no element that could, and no address in the style.
    for (const char* const part : {"<script", "<link", "<img", "src=", "url(", "@import", "http"})
        QVERIFY2(!page.contains(part), part);
}

/// Dark and light, in two frames, a phone's width and a wide one. ZORVI_AXE names a copy of
/// axe.min.js: then the page is checked with it too.
void TestPage::aBrowserShowsThePage()
{
    QString script = fileBytes(PAGE_CHECK);
    const QString axe = qEnvironmentVariable("ZORVI_AXE");
    if (!axe.isEmpty())
        script += fileBytes(axe) + "axe.run().then(found => { found.violations.forEach(each => "
                                   "console.log('WRONG: ' + each.id + ' ' + each.nodes[0].html)); "
                                   "console.log('CHECKED by axe'); });";
    const QTemporaryDir folder;
    const QString frames = folder.filePath("frames.html");
    QVERIFY(writeFile(folder.filePath("page.html"),
                      written(sample()) + "<script>" + script + "</script>"));
    QVERIFY(writeFile(frames, "<iframe src='page.html' width='400' height='800'></iframe>"
                              "<iframe src='page.html' width='1600' height='800'></iframe>"));
    for (const char* const scheme : {"0", "1"}) {
        const QString console =
            browse(frames, {"--enable-logging=stderr", "--virtual-time-budget=20000", "--dump-dom",
                            QString("--blink-settings=preferredColorScheme=") + scheme});
        const QStringList wrong = console.split('\n').filter(QRegularExpression("WRONG|Uncaught"));
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
        QCOMPARE(console.count("CHECKED"), axe.isEmpty() ? 2 : 4);
    }
}

void TestPage::paperIsBounded()
{
    Report report = sample();
    report.openUnits.fill(report.openUnits.first(), Report::maxOpenUnits);
    report.repeatedUnits.fill(report.repeatedUnits.first(), Report::maxRepeatedUnits);
    for (int day = 0; day < 60; ++day)
        report.days[QDate(2026, 9, 18).addDays(day)] = {100, 120, 80, 90, 1};
    const QTemporaryDir folder;
    const QString pdf = folder.filePath("page.pdf");
    QVERIFY(writeFile(folder.filePath("page.html"), written(report)));
    browse(folder.filePath("page.html"), {"--print-to-pdf=" + pdf});
    const int pages = fileBytes(pdf).count("/Type /Page\n");
    QVERIFY2(pages > 6 && pages < 15, qPrintable(QString::number(pages)));
    QVERIFY(written(report).contains("On paper: the first 60 of the 5,000"));
}

QTEST_MAIN(TestPage)
#include "test_page.moc"
