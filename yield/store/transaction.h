// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/store/database.h"

/// A transaction, undone unless it is committed. Everything throws DatabaseError.
class Transaction
{
public:
    /// Read: sees the same rows from its beginning to its end. Write: has no other writer beside it
    /// and waits for the one before, at most a minute.
    Transaction(Database& usedDatabase, Database::Access access);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Database& database;
};
