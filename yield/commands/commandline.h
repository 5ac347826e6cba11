// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QStringList>

/// The program's commands.
namespace commandline
{
/// Runs the command that the arguments name (the program's name is the first); needs a
/// QCoreApplication. The status for the shell: 0; 1 if a log was refused or a unit is not complete;
/// 2 if the command line makes no sense, the database failed or a file could not be written.
int run(const QStringList& arguments);
} // namespace commandline
