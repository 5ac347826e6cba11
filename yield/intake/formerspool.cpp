// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/formerspool.h"

#include "yield/intake/messages.h"
#include "yield/store/database.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
/// Those that waited, and those that were set aside because the tables refused them.
QStringList logsIn(const QString& spool)
{
    QStringList logs;
    for (const char* folder : {"/logs", "/aside"})
        for (const QFileInfo& file : QDir(spool + folder).entryInfoList(QDir::Files))
            if (file.suffix() != "reason")
                logs << file.filePath();
    return logs;
}
} // namespace

std::vector<formerspool::Spool> formerspool::read(const QString& root, const QString& database)
{
    const QString location =
        Database::isAddress(database) ? database : QFileInfo(database).absoluteFilePath();
    std::vector<Spool> spools;
    for (const QFileInfo& folder :
         QDir(root + "/v1").entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QStringList logs = logsIn(folder.filePath());
        QFile file(folder.filePath() + "/about.json");
        file.open(QIODevice::ReadOnly);
        const QJsonObject about = QJsonDocument::fromJson(file.readAll()).object();
        if (about["database"].toString() == location)
            spools.push_back({{about["station"].toString(), about["tests_18"].toBool()}, logs});
        else if (!logs.isEmpty())
            messages::warn(QString("%1: %2 logs not imported: they are for the database %3")
                               .arg(folder.filePath(), QString::number(logs.size()),
                                    about["database"].toString()));
    }
    return spools;
}
