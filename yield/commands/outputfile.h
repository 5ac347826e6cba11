// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFileDevice>
#include <QString>

#include <memory>

/// The file that a command writes: replaced as a whole at the end, or left as it was. A pipe or a
/// device is written through instead, and "-" is standard output.
class OutputFile
{
public:
    explicit OutputFile(const QString& path);

    /// Whether it can be written.
    bool isOpen() const { return output->isOpen(); }

    QIODevice& device() const { return *output; }

    /// After the last byte. Whether all of it arrived.
    bool finish();

    /// What went wrong, for people.
    QString problem() const;

private:
    const QString name;
    std::unique_ptr<QFileDevice> output;
};
