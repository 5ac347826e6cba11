// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include <functional>

class Database;

namespace databasecheck
{
/// Says, a line each, where rows differ from what the marks of all logs come to by the rules of
/// attemptrules: the grouping, complete, ended_at and the missed bands. Gives the number of the
/// lines. Throws DatabaseError.
int check(Database& database, const std::function<void(const QString&)>& say);
} // namespace databasecheck
