// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/stopsignals.h"

#include <QCoreApplication>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

StopSignals::StopSignals()
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    sigaddset(&signalSet, SIGTERM);
    sigaddset(&signalSet, SIGINT);
    sigprocmask(SIG_BLOCK, &signalSet, nullptr);
    descriptor = signalfd(-1, &signalSet, SFD_CLOEXEC);
    notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(notifier.get(), SIGNAL(activated(int)), QCoreApplication::instance(),
                     SLOT(quit()));
}

StopSignals::~StopSignals()
{
    notifier.reset();
    close(descriptor);
}
