// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/testlog.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QUuid>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
/// A new log grows beside the old one, under a name that no log has and nobody gives to a copy.
const QString growingPrefix = QStringLiteral(".zorvi_log_in_the_making_");

QString kindName(int component)
{
    switch (roster::kindOf(component)) {
    case roster::Kind::Fader:
        return QStringLiteral("FADER");
    case roster::Kind::Button:
        return QStringLiteral("BUTTON");
    case roster::Kind::Rotary:
        break;
    }
    return QStringLiteral("ROTARY");
}

QString block(int component, const QVector<ComponentRange>& ranges)
{
    QString text = QStringLiteral("\r\n\r\n---------------- %1: %2 (Component %3) ----------------")
                       .arg(kindName(component))
                       .arg(roster::indexInKind(component))
                       .arg(component);
    if (component == roster::powerButton)
        return text + QStringLiteral("\r\n NOT TESTED (Power Button)");
    for (int i = 0; i < ranges.size(); ++i)
        text += QStringLiteral("\r\nRange %1: %2")
                    .arg(i)
                    .arg(static_cast<double>(ranges.at(i).covered), 0, 'g', -1);
    return text;
}

/// Whether every byte reached the disk. A device that is full says so only once what was buffered
/// is written out.
bool writeTo(QFile& file, const QStringList& lines)
{
    QTextStream stream(&file);
    for (const QString& line : lines)
        stream << line << '\n';
    stream.flush();
    bool whole = stream.status() == QTextStream::Ok && file.flush();
#ifdef Q_OS_UNIX
    whole = whole && fsync(file.handle()) == 0;
#endif
    return whole;
}

/// Puts the new file in the place of the one that stands there, in one step.
bool replace(const QString& path, QFile& grown)
{
    grown.close();
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(grown.fileName()).toStdString(),
                            QFile::encodeName(path).toStdString(), error);
    return !error;
}
} // namespace

QStringList testlog::lines(const QString& serial, const QDateTime& when, const Coverage& coverage)
{
    QStringList lines;
    lines.reserve(2 + roster::componentCount);
    lines << QStringLiteral("Norvane Instruments");
    // Both at once, so that a serial with a place marker in it stays as typed.
    lines << QStringLiteral("\r\n\r\nZORVI\t#%1\t%2").arg(serial, when.toString(Qt::TextDate));
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        lines << block(c, coverage.at(static_cast<std::size_t>(c)));
    return lines;
}

QString testlog::path(const QString& applicationDirectory, const QString& serial)
{
    return applicationDirectory + QStringLiteral("/Logs/ZORVI_%1.txt").arg(serial);
}

void testlog::write(const QString& path, const QStringList& lines)
{
    // A file name ends at a NUL: the log would get somebody else's.
    if (path.contains(QChar::Null))
        return;
    const QFileInfo old(path);
    QFile growing(old.path() + QLatin1Char('/') + growingPrefix +
                  QUuid::createUuid().toString(QUuid::Id128));
    // What cannot be replaced is written in place: a link, a device, a file in a folder that takes
    // no new ones.
    const bool replaceable = !old.isSymLink() && (!old.exists() || old.isFile());
    if (!replaceable || !growing.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        QFile inPlace(path);
        if (inPlace.open(QIODevice::WriteOnly))
            writeTo(inPlace, lines);
        return;
    }
    if (old.exists())
        growing.setPermissions(old.permissions());
    const bool mayReplace = !old.exists() || old.isWritable();
    if (mayReplace && writeTo(growing, lines) && replace(path, growing))
        return;
    // By its name: a file that cannot be written out refuses to be removed through the open one.
    growing.close();
    QFile::remove(growing.fileName());
}

void testlog::removeLeftovers(const QString& applicationDirectory)
{
    constexpr int longestWriteSeconds = 60;
    const QDateTime stillWriting = QDateTime::currentDateTime().addSecs(-longestWriteSeconds);
    QDirIterator files(applicationDirectory + QStringLiteral("/Logs"),
                       {growingPrefix + QLatin1Char('*')}, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        const QString path = files.next();
        if (files.fileInfo().lastModified() < stillWriting)
            QFile::remove(path);
    }
}
