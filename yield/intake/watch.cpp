// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/watch.h"

#include "yield/intake/capture.h"
#include "yield/intake/messages.h"
#include "yield/intake/spool.h"
#include "yield/intake/storeworker.h"
#include "yield/store/database.h"

#include <QFileInfo>

#include <array>
#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/signalfd.h>

namespace
{
/// Readable after SIGTERM or SIGINT, which do not end the process from now on.
int stopDescriptor()
{
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGTERM);
    sigaddset(&stops, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stops, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // what is said may have no reader any more
    return signalfd(-1, &stops, SFD_CLOEXEC);
}

/// A spool that the user chose belongs to one database; the default one keeps them apart.
void checkOwner(const QString& spoolRoot, const QString& database)
{
    if (spoolRoot.isEmpty())
        return;
    for (const SpoolFolder& folder : SpoolFolder::below(spoolRoot))
        if (folder.database != database)
            throw SpoolError(QString("the spool %1 is that of the database %2; give --spool "
                                     "another folder")
                                 .arg(spoolRoot, folder.database));
}

/// Gives the status for the shell.
int captureUntilStopped(Capture& capture, StoreWorker& worker)
{
    std::array<pollfd, 2> all = {pollfd{stopDescriptor(), POLLIN, 0},
                                 pollfd{capture.descriptor(), POLLIN, 0}};
    worker.start();
    while (all[0].revents == 0 && !worker.isHopeless()) {
        poll(all.data(), all.size(), capture.work());
        for (const QString& path : worker.takeRefused())
            capture.readLog(path);
        capture.readEvents();
    }
    return all[0].revents != 0 ? 0 : exitstatus::failed;
}
} // namespace

int watch::run(ImportRequest request, const QString& spool)
{
    Database::check(request.database);
    if (!Database::isAddress(request.database))
        request.database = QFileInfo(request.database).absoluteFilePath();
    try {
        checkOwner(spool, request.database);
        const QString root = spool.isEmpty() ? SpoolFolder::defaultRoot() : spool;
        Spool ownSpool(root, request.database, request.station);
        StoreWorker worker(request, root);
        Capture capture(request.paths, ownSpool, worker);
        const int status = captureUntilStopped(capture, worker);
        const bool isOver = worker.stop();
        messages::tell(
            QString("logs that wait in the spool: %1").arg(ownSpool.folder().waiting().size()));
        if (!isOver)
            std::_Exit(status); // what the spool holds is on the disk
        return status;
    } catch (const SpoolError& error) {
        messages::warn(error.text());
        return exitstatus::failed;
    }
}
