// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/command.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("zorvi_yield");
    QCoreApplication::setApplicationVersion(ZORVI_VERSION);
    return static_cast<int>(command::run(QCoreApplication::arguments()));
}
