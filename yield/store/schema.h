// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

class Database;

/// The versions of the tables.
namespace schema
{
/// Makes missing tables and migrates older ones, in one transaction. To be called by what imports,
/// at its start, and by nothing else. Throws DatabaseError.
void migrate(Database& database);

/// Throws DatabaseError unless the tables have today's version: of Kind::Unavailable for newer
/// ones, of Kind::Unusable for older or missing ones, which an import migrates or makes.
void requireCurrent(Database& database);
} // namespace schema
