// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
/// Writes the bytes and returns whether all are on the disk. A full disk reports it only when the
/// buffer is written out, one across a network only when it is asked to sync.
bool writeOut(QFileDevice& file, const QByteArray& bytes)
{
    bool whole = file.write(bytes) == bytes.size() && file.flush();
#if defined(_POSIX_SYNCHRONIZED_IO) && _POSIX_SYNCHRONIZED_IO > 0
    whole = whole && fdatasync(file.handle()) == 0;
#endif
    return whole;
}

/// A new log is as open to the group as its folder is, whatever the writing user's mask: all who
/// may put logs into the folder may replace it.
void openToGroup(QFileDevice& file)
{
    const QFileInfo folder(QFileInfo(file.fileName()).path());
    if (folder.permission(QFileDevice::WriteGroup))
        file.setPermissions(file.permissions() | QFileDevice::ReadGroup | QFileDevice::WriteGroup);
}

/// Replaces a file in one step. Returns false if that is impossible here; true also if the disk is
/// full: the old file stays then.
bool replaceFile(const QString& path, const QByteArray& bytes)
{
    const QFileInfo old(path);
    // Pipes and devices are written to.
    if (old.exists() && !old.isFile())
        return false;
    QSaveFile file(path); // follows links
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (!old.exists())
        openToGroup(file);
    return !writeOut(file, bytes) || file.commit();
}

QString kindName(int componentNum)
{
    switch (roster::kindOf(componentNum)) {
    case roster::Kind::Fader:
        return QStringLiteral("FADER");
    case roster::Kind::Button:
        return QStringLiteral("BUTTON");
    case roster::Kind::Rotary:
        break;
    }
    return QStringLiteral("ROTARY");
}

QString block(int componentNum, const QVector<ComponentRange>& ranges)
{
    QString text =
        QStringLiteral("\r\n\r\n---------------- %1: %2 (Component %3) ----------------")
            .arg(kindName(componentNum), QString::number(roster::indexInKind(componentNum)),
                 QString::number(componentNum));
    if (componentNum == roster::powerButton)
        return text + QStringLiteral("\r\n NOT TESTED (Power Button)");
    // Not by arg(): searching each line for placeholders took most of the time before the disk.
    for (int i = 0; i < ranges.size(); ++i) {
        text += QStringLiteral("\r\nRange ");
        text += QString::number(i);
        text += QStringLiteral(": ");
        text += QString::number(static_cast<double>(ranges.at(i).covered), 'g', -1);
    }
    return text;
}
} // namespace

QStringList testlog::lines(const QString& serial, const QDateTime& when, const Coverage& coverage)
{
    QStringList lines;
    lines.reserve(2 + roster::componentCount);
    lines << QStringLiteral("Norvane Instruments");
    // Both in one call, so that a serial with a placeholder stays as typed.
    lines << QStringLiteral("\r\n\r\nZORVI\t#%1\t%2").arg(serial, when.toString(Qt::TextDate));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        lines << block(c, coverage.at(static_cast<std::size_t>(c)));
    return lines;
}

QByteArray testlog::bytes(const QStringList& lines)
{
    QByteArray bytes;
    QTextStream stream(&bytes);
    for (const QString& line : lines)
        stream << line << '\n';
    stream.flush();
    return bytes;
}

QString testlog::folder(const QString& applicationDirectory)
{
    return applicationDirectory + QStringLiteral("/Logs");
}

QString testlog::path(const QString& applicationDirectory, const QString& serial)
{
    return folder(applicationDirectory) + QStringLiteral("/ZORVI_%1.txt").arg(serial);
}

bool testlog::writeInPlace(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    const bool isNew = !file.exists();
    // Some systems refuse to open another user's file in a sticky folder if it could be created.
    const auto existing = isNew ? QIODevice::NotOpen : QIODevice::ExistingOnly;
    if (!file.open(QIODevice::WriteOnly | existing))
        return false;
    if (isNew)
        openToGroup(file);
    return writeOut(file, bytes);
}

void testlog::write(const QString& path, const QStringList& lines)
{
    // A file name ends at a NUL, so another file would be written.
    if (path.contains(QChar::Null))
        return;
    const QByteArray log = bytes(lines);
    // In place where the folder takes no new file or refuses the rename: a sticky folder, a mount
    // point, some network shares.
    if (!replaceFile(path, log))
        writeInPlace(path, log);
}
