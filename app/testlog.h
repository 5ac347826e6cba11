// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentrange.h"
#include "unit/componentroster.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <array>

/// The text of a unit's log, and how it is written.
namespace testlog
{
/// The bands of every component, by component number.
using Coverage = std::array<QVector<ComponentRange>, roster::componentCount>;

/// The log's elements: the maker, the unit, then one block for each component. Elements begin with
/// their own CR LF pairs and end with a LF. The file mixes line ends on purpose: programs that read
/// these logs expect exactly these bytes.
QStringList lines(const QString& serial, const QDateTime& when, const Coverage& coverage);

/// The elements as they are in the file: a line feed after each, in the system's 8-bit encoding.
QByteArray bytes(const QStringList& lines);

/// The folder of the logs.
QString folder(const QString& applicationDirectory);

/// The log's path in that folder; the serial is taken as typed.
QString path(const QString& applicationDirectory, const QString& serial);

/// Writes a file over an old one, not in one step: a kill leaves a part. A new file is as open to
/// the group as its folder. Returns false, with the reason in errno, unless all is on the disk.
bool writeInPlace(const QString& path, const QByteArray& bytes);

/// Writes the log of these elements. An old log is replaced whole or stays, also if the disk is
/// full or the process is killed. Only where the folder does not permit that, and through a link
/// whose target is missing, it is written in place.
/// A log that the user may not write stays. Failure is silent: the station goes on with the next
/// unit. No folder is created, and nothing is deleted: a kill within a write can leave a file of
/// the log's name, a point and six letters, as a user's copy may be called.
void write(const QString& path, const QStringList& lines);
} // namespace testlog
