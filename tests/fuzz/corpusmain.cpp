// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QDir>

#include <iostream>

// libFuzzer's entry points; a case that must not be ends the program.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs every case of the folder that is named first, without a fuzzer and with any compiler.
int main(int argc, char* argv[])
{
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    LLVMFuzzerInitialize(&argc, &argv);
    int cases = 0;
    for (const QString& name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        cases += file.open(QIODevice::ReadOnly) ? 1 : 0;
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size()));
    }
    std::cout << cases << " cases\n";
    return cases > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
