// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>

/// A file's content replaced whole or not at all, a full disk and the end of the process included.
/// QSaveFile is not enough here: whoever is killed while it writes leaves a file that nobody could
/// tell from an operator's own copy.
namespace filereplacement
{
/// Writes the bytes over whatever stood there. The new file grows hidden beside the old one; only
/// where the folder takes no new files, or a link or device stands there, is it written in place.
/// False, and the old file as it was, if that failed. No folder is created.
bool write(const QString& path, const QByteArray& bytes);

/// Removes what was left in the folder by a process that was killed while it wrote. What grew
/// within the last minute may be another process's that is writing now; it stays.
void removeLeftovers(const QString& folder);
} // namespace filereplacement
