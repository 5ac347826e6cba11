// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "panels/componentrange.h"
#include "panels/componentroster.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <array>

/// The text of a unit's log and how it gets to disk.
namespace testlog
{
/// The bands of every component, by component number.
using Coverage = std::array<QVector<ComponentRange>, roster::componentCount>;

/// The log's elements: the maker, the unit, then one block for each component. Elements begin with
/// their own CR LF pairs, so the file mixes line ends; other programs rely on it.
QStringList lines(const QString& serial, const QDateTime& when, const Coverage& coverage);

/// The log's path under the application directory; the serial is taken as typed.
QString path(const QString& applicationDirectory, const QString& serial);

/// Writes the elements, a line feed after each, over whatever stood there: an old log is replaced
/// whole or not at all, a full disk and the end of the station included; only where the folder
/// takes no new files is it written in place. Failure is silent: the station goes on with the next
/// unit. No folder is created.
void write(const QString& path, const QStringList& lines);

/// Removes what a station left in Logs that was killed while it wrote: a new log grows in a hidden
/// file beside the old one. Such a file of the last minute may be another station's that is writing
/// now; it stays.
void removeLeftovers(const QString& applicationDirectory);
} // namespace testlog
