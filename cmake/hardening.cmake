# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

# What makes a mistake in the code end the program instead of being used: for all code, JUCE's too.
# Debian's own flags say most of it again when the package is built; Debian 12's lack stack-clash and
# control-flow protection.
include(CheckCXXCompilerFlag)

set(flags -fstack-protector-strong -fstack-clash-protection -fcf-protection)
foreach(flag ${flags})
    # Some are there on some processors only.
    string(MAKE_C_IDENTIFIER "ZORVI_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
        add_compile_options(${flag})
    endif()
endforeach()
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
    add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()
