// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "demo/linesimulation.h"
#include "simulator/unitoptions.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLoggingCategory>
#include <QTextStream>

#include <stdexcept>

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

    const QString folder = parser.value(QStringLiteral("output"));
    int units = 0;
    try {
        units = unitoptions::wholeNumber(parser, QStringLiteral("units"), 1, 100000);
        if (!QDir().mkpath(folder))
            throw std::runtime_error("the folder " + folder.toStdString() + " cannot be created.");
        linesimulation::run(folder, units, QDate::currentDate().addDays(-1));
    } catch (const std::runtime_error& error) {
        QTextStream(stderr) << "zorvi_line_demo: " << error.what() << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << "Report on " << units
                        << " units: " << QDir(folder).absoluteFilePath(QStringLiteral("yield.html"))
                        << Qt::endl;
    return 0;
}
