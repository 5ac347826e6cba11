// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/intake/capture.h"
#include "yield/intake/messages.h"
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
} // namespace

int logimport::watch(ImportRequest request, const QString& spoolFolder)
{
    Database::check(request.database);
    if (!Database::isAddress(request.database))
        request.database = QFileInfo(request.database).absoluteFilePath();
    const int stop = stopDescriptor();
    const Spool spool = Spool::locked(spoolFolder, request.database, request.station);
    StoreWorker worker(request, Spool::below(spoolFolder));
    Capture capture(request.paths, spool, worker);
    std::array<pollfd, 2> all = {pollfd{stop, POLLIN, 0}, pollfd{capture.descriptor(), POLLIN, 0}};
    while (all[0].revents == 0 && !worker.isOver()) {
        poll(all.data(), all.size(), capture.work());
        for (const QString& path : worker.takeRefused())
            capture.readLog(path);
        capture.readEvents();
    }
    const int status = all[0].revents != 0 ? 0 : exitstatus::failed;
    const bool isStopped = worker.stop();
    messages::tell(QString("logs that wait in the spool: %1").arg(spool.waiting().size()));
    if (!isStopped)
        std::_Exit(status); // what the spool holds is on the disk
    return status;
}
