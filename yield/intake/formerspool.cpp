// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/formerspool.h"

#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/store/database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
/// The logs of one station that were pending for one database.
struct Spool {
    QString path;
    QString database; ///< An address, or the whole path of a file.
    Station station;
};

Spool readSpool(const QString& path)
{
    QFile file(path + "/about.json");
    file.open(QIODevice::ReadOnly);
    const QJsonObject about = QJsonDocument::fromJson(file.readAll()).object();
    return {path,
            about["database"].toString(),
            {about["station"].toString(), about["tests_18"].toBool()}};
}

/// The logs, with those that were set aside because the tables refused them.
QStringList pendingIn(const Spool& spool)
{
    QStringList logs;
    for (const char* folder : {"/logs", "/aside"})
        for (const QFileInfo& file : QDir(spool.path + folder).entryInfoList(QDir::Files))
            if (file.suffix() != "reason")
                logs << file.filePath();
    return logs;
}

/// A log that stays where it is will be a duplicate when it is read again.
void moveToStored(const QString& log, const Spool& spool)
{
    const QString folder = spool.path + "/stored";
    QDir().mkpath(folder);
    QFile::rename(log, folder + '/' + QFileInfo(log).fileName());
}
} // namespace

bool formerspool::store(Database& database, const QString& location, const QString& root)
{
    const QString wanted =
        Database::isAddress(location) ? location : QFileInfo(location).absoluteFilePath();
    bool isEmpty = true;
    for (const QFileInfo& folder :
         QDir(root + "/v1").entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const Spool spool = readSpool(folder.filePath());
        const QStringList pending = pendingIn(spool);
        if (pending.isEmpty())
            continue;
        if (spool.database != wanted) {
            messages::warn(QString("%1: %2 logs stay pending for the database %3")
                               .arg(spool.path, QString::number(pending.size()), spool.database));
            isEmpty = false;
            continue;
        }
        messages::print(spool.path + ": storing the logs of version 1.2.0");
        logimport::store(database, spool.station, pending, [&](const logimport::Batch& batch) {
            logimport::printWarnings(batch.counts);
            isEmpty = logimport::printProblems(batch) == 0 && isEmpty;
            for (const QString& log : batch.stored)
                moveToStored(log, spool);
        });
    }
    return isEmpty;
}
