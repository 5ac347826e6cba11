// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstddef>
#include <cstdint>

// The entry points of libFuzzer, and of corpusmain.cpp, which runs cases that were found before.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
/// Tries one case; a case that must not be ends the program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
