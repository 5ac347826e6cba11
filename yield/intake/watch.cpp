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
    for (const Spool& spool : Spool::below(spoolRoot))
        if (spool.database != database)
            throw SpoolError(QString("the spool %1 is that of the database %2; give --spool "
                                     "another folder")
                                 .arg(spoolRoot, spool.database));
}

/// Gives the status for the shell.
int captureUntilStopped(Capture& capture, StoreWorker& worker, int stop)
{
    std::array<pollfd, 2> all = {pollfd{stop, POLLIN, 0}, pollfd{capture.descriptor(), POLLIN, 0}};
    worker.start();
    while (all[0].revents == 0 && !worker.isOver()) {
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
    constexpr std::chrono::milliseconds stopTime{500};
    Database::check(request.database);
    if (!Database::isAddress(request.database))
        request.database = QFileInfo(request.database).absoluteFilePath();
    const int stop = stopDescriptor();
    try {
        if (!spool.isEmpty())
            checkOwner(spool, request.database);
        const QString root = spool.isEmpty() ? Spool::defaultRoot() : spool;
        const Spool ownSpool = Spool::locked(root, request.database, request.station);
        StoreWorker worker(request, root);
        Capture capture(request.paths, ownSpool, worker);
        const int status = captureUntilStopped(capture, worker, stop);
        worker.stop();
        const bool isOver = worker.isOver(stopTime);
        messages::tell(QString("logs that wait in the spool: %1").arg(ownSpool.waiting().size()));
        if (!isOver)
            std::_Exit(status); // what the spool holds is on the disk
        return status;
    } catch (const SpoolError& error) {
        messages::warn(error.what());
        return exitstatus::failed;
    }
}
