// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "yield/commands/attempttext.h"
#include "yield/commands/command.h"
#include "yield/commands/outputfile.h"
#include "yield/intake/progress.h"
#include "yield/store/attemptreader.h"

#include <QTemporaryFile>

namespace
{
int copyToOutput(QFile& file)
{
    constexpr int pieceSize = 1 << 16;
    OutputFile out("-");
    bool isCopied = out.isOpen() && file.seek(0);
    while (isCopied && !file.atEnd()) {
        const QByteArray piece = file.read(pieceSize);
        isCopied = !piece.isEmpty() && out.device().write(piece) == piece.size();
    }
    return isCopied && out.finish() ? 0 : command::fail(out.problem());
}

int exportAttempts(const QCommandLineParser& parser)
{
    const QString format = parser.value("format");
    const bool isJson = format == "json";
    if (!isJson && format != "csv")
        return command::fail(QString("--format takes csv or json, not \"%1\"").arg(format));
    Database database(command::database(parser), Database::Access::Read);
    // Kept until it is whole: a reader that takes its time must not keep others from importing.
    QTemporaryFile records;
    if (!records.open())
        return command::fail("no temporary file: " + records.errorString());
    QByteArray separator = "[\n";
    if (!isJson)
        records.write(attempttext::csvHead());
    Progress progress("attempts");
    attemptreader::forEachByTime(database, [&](const Attempt& attempt) {
        progress.add(1);
        if (!isJson) {
            records.write(attempttext::csv(attempt));
            return;
        }
        records.write(separator + attempttext::json(attempt));
        separator = ",\n";
    });
    if (isJson)
        records.write(separator == "[\n" ? "[]\n" : "\n]\n");
    if (!records.flush() || records.error() != QFileDevice::NoError)
        return command::fail(QString("%1: %2").arg(records.fileName(), records.errorString()));
    return copyToOutput(records);
}
} // namespace

Command exportCommand()
{
    Command command;
    command.name = "export";
    command.description = "Writes one record for each attempt to standard output.";
    command.run = exportAttempts;
    command.options = {{"format", "csv or json.", "csv|json"}};
    return command;
}
