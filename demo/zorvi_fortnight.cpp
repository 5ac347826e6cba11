// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/fortnight.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLoggingCategory>
#include <QTextStream>

namespace
{
int fail(const QString& problem)
{
    QTextStream(stderr) << "zorvi_fortnight: " << problem << Qt::endl;
    return 1;
}
} // namespace

int main(int argc, char* argv[])
{
    // Nothing is shown, and the logs' dates are in English.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    const QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZORVI_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Two weeks of a line with three stations: tests simulated units, imports "
                       "their logs and makes the page about their yield."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({QStringLiteral("units"), QStringLiteral("How many units (default: 300)."),
                      QStringLiteral("number"), QStringLiteral("300")});
    parser.addOption({QStringLiteral("output"),
                      QStringLiteral("Folder for yield.html and, in place of an earlier one, the "
                                     "folder fortnight with logs and database (default: the "
                                     "current one)."),
                      QStringLiteral("folder"), QStringLiteral(".")});
    parser.process(application);

    constexpr int mostUnits = 100000;
    bool isNumber = false;
    const int units = parser.value(QStringLiteral("units")).toInt(&isNumber);
    if (!isNumber || units < 1 || units > mostUnits)
        return fail(QStringLiteral("--units takes a number from 1 to %1").arg(mostUnits));
    const QString folder = parser.value(QStringLiteral("output"));
    if (!QDir().mkpath(folder))
        return fail(QStringLiteral("the folder %1 cannot be made").arg(folder));

    QString problem;
    if (!fortnight::make(folder, units, QDate::currentDate().addDays(-1), problem))
        return fail(problem);
    QTextStream(stdout) << "The page about " << units
                        << " units: " << QDir(folder).absoluteFilePath(QStringLiteral("yield.html"))
                        << Qt::endl;
    return 0;
}
