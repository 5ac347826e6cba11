// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tests/yield/unitlogs.h"
#include "yield/commands/reportfile.h"
#include "yield/page/chart.h"
#include "yield/page/figuretext.h"
#include "yield/page/page.h"
#include "yield/store/attemptstore.h"
#include "yield/store/database.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace
{
const QString hostileSerial =
    QStringLiteral("</td><script>console.log('run')</script>&amp;\"\u202e\x01\uffff😀");

/// A unit is named by its serial; minutes count from noon of 21 Nov 2026.
bool store(Database& database, const QString& station, bool tests18, const QString& serial,
           int minutes, const BandMarks& marks)
{
    return attemptstore::store(database, {station, tests18},
                               {unitlogs::log(serial, minutes, marks)})
               .added == 1;
}

QString elementText(const QString& html, const QString& id)
{
    const int begin = html.indexOf(QStringLiteral("id=\"%1\"").arg(id));
    return html.mid(begin, html.indexOf(QStringLiteral("</section>"), begin) - begin);
}
} // namespace

class TestReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAndFigures();
    void aBrowserShowsThePage();
};

void TestReport::wordsAndFigures()
{
    QCOMPARE(figuretext::percent(99999, 100000), QStringLiteral("99.9\u00a0%"));
    QCOMPARE(figuretext::percent(1, 100000), QStringLiteral("0.1\u00a0%"));
    QCOMPARE(figuretext::share(1234, 1234), QStringLiteral("100\u00a0% (1,234 of 1,234)"));
    QCOMPARE(figuretext::percent(0, 0), QStringLiteral("–"));
}

/// What headless Chromium makes of it; it writes what the page says to its console to stderr.
void TestReport::aBrowserShowsThePage()
{
    const QString chromium = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    if (chromium.isEmpty())
        QSKIP("chromium is not installed");
    const QTemporaryDir folder;
    Database database(folder.filePath(QStringLiteral("a.sqlite")), Database::Access::Write);
    const auto dom = [&](QString& console) {
        QFile file(folder.filePath(QStringLiteral("a page.html")));
        if (!file.open(QIODevice::WriteOnly) || !writeReport(database, {}, file))
            return file.errorString();
        file.close();
        QProcess browser;
        browser.start(chromium,
                      {"--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
                       "--disable-background-networking", "--disable-component-update",
                       "--disable-sync", "--user-data-dir=" + folder.filePath("profile"),
                       "--enable-logging=stderr", "--dump-dom",
                       QUrl::fromLocalFile(file.fileName()).toString(QUrl::FullyEncoded)});
        browser.waitForFinished();
        console = QString::fromUtf8(browser.readAllStandardError());
        return QString::fromUtf8(browser.readAllStandardOutput());
    };
    QString console;
    const QString hostileStation = QStringLiteral("<b>1</b> & \"2\"");
    QVERIFY(store(database, hostileStation, false, hostileSerial, 0,
                  unitlogs::allBut({{3, 12}, {18, 0}, {18, 1}})));
    QVERIFY(store(database, hostileStation, false, "good", 1, unitlogs::whole()));
    const QString page = dom(console);
    QVERIFY2(!console.contains(QStringLiteral("CONSOLE")), qPrintable(console));
    const QString open = elementText(page, QStringLiteral("open"));
    QVERIFY2(
        open.contains(QStringLiteral("&lt;/td&gt;&lt;script&gt;console.log('run')&lt;/script&gt;"
                                     "&amp;amp;\"\ufffd\ufffd\ufffd😀</td>")),
        qPrintable(open));
    QVERIFY(open.contains(QStringLiteral("Fader 3: 120 to 127")));
    QVERIFY(elementText(page, QStringLiteral("stations"))
                .contains(QStringLiteral("&lt;b&gt;1&lt;/b&gt; &amp; \"2\"")));
    QVERIFY(
        elementText(page, QStringLiteral("surface"))
            .contains(QStringLiteral("<title>Fader 3 (component 3): missed at the first attempt "
                                     "by 50.0&nbsp;% (1 of 2)</title>")));
    // Nothing is fetched: no element that could, and no address in the style.
    for (const char* const part : {"<script", "<link", "<img", "src=", "url(", "@import", "http"})
        QVERIFY2(!page.contains(QLatin1String(part)), part);
}

QTEST_MAIN(TestReport)
#include "test_report.moc"
