// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/figures/report.h"
#include "yield/page/figuretext.h"
#include "yield/page/page.h"

#include <QBuffer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

namespace
{
const QString hostile = "</td><script>console.log('WRONG')</script>&amp;\"\u202e\x01\uffff\ufffe" +
                        QString(QChar(0xd800)) + "\t\U0001f600";

/// A report that has everything to show, with a hostile text wherever one can stand.
Report sample()
{
    Report report;
    report.request.now = QDateTime({2026, 11, 18}, {8, 0});
    report.request.since = {2026, 9, 1};
    report.request.until = {2026, 11, 18};
    report.request.without = QStringList{"GOLD*", hostile};
    report.request.news = {{hostile, "2026-11-17T08:00:00"}, // a day
                           {"Two", "2026-11-17T07:59:59"},   // and more
                           {"Three", "2026-11-18T06:00:00"}, {"Four", "2026-11-18T06:00:01"},
                           {"Five", "2026-11-16T08:00:00"},  {"Six", {}}};
    report.leftOut = 2;
    report.total = {12000, 14000, 10800, 6900, 120};
    for (int day = 0; day < 60; ++day)
        report.days[QDate(2026, 9, 18).addDays(day)] = {200, 240, 180 - 2 * (day % 9), 190, 2};
    report.offAxis.units = 3;
    report.attemptsByNumber.fill({1, 1, 0}, Report::maxNumbers);
    report.stations = {{"One", {hostile, {6000, 7000, 5520, 5800, 60}, QVector<int>(44)}},
                       {"Two", {"Two", {6000, 7000, 5280, 5100, 60}, QVector<int>(44, 1)}}};
    for (int c = 0; c < 44; ++c)
        report.controls.append({c, 12000, 100 * (c % 20), QVector<int>(c % 30 < 9 ? 13 : 2, c), 1});
    const Attempt attempt{hostile, true, hostile, "2026-11-18T07:15:59", BandMarks(1)};
    Attempt open = attempt;
    open.marks = ~BandMarks() >> 26; // without its last two controls
    for (const auto& band : {bandmarks::Band{3, 0}, {9, 1}, {10, 0}, {11, 0}, {12, 0}})
        open.marks.reset(bandmarks::markIndex(band.componentNum, band.band));
    report.openUnits = {{attempt, open, 1234}};
    report.repeatedUnits = {{attempt, attempt, 5678}};
    report.repeatedUnitCount = 2200;
    return report;
}

QString written(const Report& report)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return page::write(report, buffer) ? QString::fromUtf8(buffer.data()).replace(QChar::Nbsp, ' ')
                                       : "not written";
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

/// What model.py does not compare: it reads the tables and the pictures.
class TestPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts();
    void hostileTexts();
    void aBrowserShowsThePage();
    void paperIsBounded();
};

void TestPage::texts()
{
    Report report = sample();
    const auto strokes = [&] { // where elements begin and end
        return written(report)
            .replace(QRegularExpression("\\s*<[^>]*>[\\s|]*"), "|")
            .replace(QRegularExpression("\\|+"), "|")
            .simplified();
    };
    const QString text = strokes();
    const QStringList parts = {
        "first tested from 2026-09-01 to 2026-11-18, at all stations, without GOLD*, &lt;/td&gt;",
        ": 2 units left out. Made on 2026-11-18 08:00.|",
        "|Tue 17 Nov 08:00|24 hours|",
        "|nothing since Tue 17 Nov 07:59|24 hours|",
        "|Wed 18 Nov 06:00|2 hours|",
        "|Wed 18 Nov 06:00|119 min|",
        "|nothing since Mon 16 Nov 08:00|2 days|",
        "|5,100 units whose last attempt is not complete, newest first",
        "|1,234|ended early at Rotary 2; Fader 3: 0 to 9; Button 0: pressed; Button 1: released; "
        "and 2 more|And 5,099 more;",
        "|2,200 units, most attempts first.|",
        "|And 2,199 more;",
    };
    for (const QString& part : parts)
        QVERIFY2(text.contains(part), qPrintable(part));
    // Only all are 100 %, and only none 0 %.
    QCOMPARE(figuretext::percent(99999, 100000), QString("99.9\u00a0%"));
    QCOMPARE(figuretext::percent(1, 100000), QString("0.1\u00a0%"));
    QCOMPARE(figuretext::share(1234, 1234), QString("100\u00a0% (1,234 of 1,234)"));
    report.request.station = "One";
    report.request.until = {};
    QVERIFY(strokes().contains("tested from 2026-09-01, at station \"One\", without"));
    QFile full("/dev/full");
    QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && !page::write(report, full));
}

/// Shown as they are, wherever they stand, and nothing is fetched.
void TestPage::hostileTexts()
{
    const QString page = written(sample());
    const QString shown =
        "&lt;/td&gt;&lt;script&gt;console.log('WRONG')&lt;/script&gt;&amp;amp;&quot;"
        "\ufffd\ufffd\ufffd\ufffd?\ufffd\U0001f600";
    // The patterns, and of a station its age, its mark, its label and its row; two lists.
    QCOMPARE(page.count(shown), 10);
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
    const QTemporaryDir folder;
    const QString pdf = folder.filePath("page.pdf");
    QVERIFY(writeFile(folder.filePath("page.html"), written(report)));
    browse(folder.filePath("page.html"), {"--print-to-pdf=" + pdf});
    const int pages = fileBytes(pdf).count("/Type /Page\n");
    QVERIFY2(pages > 15 && pages < 25, qPrintable(QString::number(pages)));
}

QTEST_MAIN(TestPage)
#include "test_page.moc"
