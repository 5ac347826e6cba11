// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/formerspool.h"

#include "yield/intake/logimport.h"
#include "yield/intake/messages.h"
#include "yield/logs/logfiles.h"
#include "yield/store/database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace
{
/// The logs for one database, of one station.
struct Spool {
    QString path;
    QString database; ///< An address, or the whole path of a file.
    Station station;
};

std::vector<Spool> spoolsBelow(const QString& root)
{
    const QDir folder(root + "/v1");
    std::vector<Spool> spools;
    for (const QString& name : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        QFile file(folder.filePath(name) + "/about.json");
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject about = QJsonDocument::fromJson(file.readAll()).object();
        spools.push_back({folder.filePath(name),
                          about["database"].toString(),
                          {about["station"].toString(), about["tests_18"].toBool()}});
    }
    return spools;
}

/// The logs that wait, and those that were set aside because the tables refused them.
QStringList pendingIn(const Spool& spool)
{
    QStringList logs;
    for (const char* folder : {"/logs", "/aside"})
        if (QFileInfo::exists(spool.path + folder))
            for (const QString& file : logfiles::filesOf(spool.path + folder))
                if (!file.endsWith(".reason"))
                    logs << file;
    return logs;
}

/// A log that stays where it is will be a duplicate when it is read again.
void moveToStored(const QString& log, const Spool& spool)
{
    const QString folder = spool.path + "/stored";
    QDir().mkpath(folder);
    QFile::rename(log, folder + '/' + QFileInfo(log).fileName());
}

bool isReadable(const QString& folder)
{
    const QFileInfo info(folder);
    return !info.exists() || (info.isReadable() && info.isExecutable());
}
} // namespace

bool formerspool::store(Database& database, const QString& location, const QString& root)
{
    if (!isReadable(root)) {
        messages::warn(root + ": the spool of version 1.2.0 cannot be read");
        return false;
    }
    const QString wanted =
        Database::isAddress(location) ? location : QFileInfo(location).absoluteFilePath();
    bool isEmpty = true;
    for (const Spool& spool : spoolsBelow(root)) {
        const QStringList pending = pendingIn(spool);
        if (pending.isEmpty())
            continue;
        if (spool.database != wanted) {
            messages::warn(QString("%1: %2 logs stay pending for the database %3")
                               .arg(spool.path)
                               .arg(pending.size())
                               .arg(spool.database));
            isEmpty = false;
            continue;
        }
        logimport::store(database, spool.station, pending, [&](const logimport::Batch& batch) {
            logimport::printWarnings(batch.counts);
            isEmpty = logimport::printProblems(batch) == 0 && isEmpty;
            for (const QString& log : batch.stored)
                moveToStored(log, spool);
        });
        messages::print(spool.path + ": the logs of version 1.2.0 are stored");
    }
    return isEmpty;
}
