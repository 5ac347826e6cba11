// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLoggingCategory>
#include <QTextStream>

#include <stdexcept>

namespace
{
int fail(const QString& problem)
{
    QTextStream(stderr) << "zorvi_line_demo: " << problem << Qt::endl;
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
        QStringLiteral("Two weeks of a line with three stations: tests simulated units, collects "
                       "their logs and makes the report on their yield."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({QStringLiteral("units"), QStringLiteral("How many units (default: 300)."),
                      QStringLiteral("number"), QStringLiteral("300")});
    parser.addOption({QStringLiteral("output"),
                      QStringLiteral("Folder for yield.html and, in place of an earlier one, the "
                                     "folder simulated-line with logs and database (default: the "
                                     "current one)."),
                      QStringLiteral("folder"), QStringLiteral(".")});
    parser.process(application);

    constexpr int maxUnits = 100000;
    bool isNumber = false;
    const int units = parser.value(QStringLiteral("units")).toInt(&isNumber);
    if (!isNumber || units < 1 || units > maxUnits)
        return fail(QStringLiteral("--units takes a number from 1 to %1").arg(maxUnits));
    const QString folder = parser.value(QStringLiteral("output"));
    if (!QDir().mkpath(folder))
        return fail(QStringLiteral("the folder %1 cannot be made").arg(folder));

    try {
        linesimulation::run(folder, units, QDate::currentDate().addDays(-1));
    } catch (const std::runtime_error& error) {
        return fail(QString::fromUtf8(error.what()));
    }
    QTextStream(stdout) << "Report on " << units
                        << " units: " << QDir(folder).absoluteFilePath(QStringLiteral("yield.html"))
                        << Qt::endl;
    return 0;
}
