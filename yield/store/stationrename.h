// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

class Database;

namespace stationrename
{
/// Gives a station another name. If there is a station of that name already, it gets the logs of
/// both, grouped anew, each log once, and tests component 18 if either does. Throws DatabaseError,
/// also where no station has the old name.
void rename(Database& database, const QString& oldName, const QString& newName);
} // namespace stationrename
