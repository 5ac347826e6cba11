// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A process that root starts as nobody, and that ends with the test whatever happens to it.
class UnprivilegedProcess : public QProcess
{
protected:
    void setupChildProcess() override;
};

/// A real PostgreSQL server in a temporary folder and at a free port.
class PostgresServer
{
public:
    ~PostgresServer() { stop(); }

    /// Why there can be no server; empty if there is one.
    QString create();
    bool start();
    void stop();

    /// For --database.
    QString location() const;

private:
    QTemporaryDir folder;
    UnprivilegedProcess server;
    int port = 0;
};
