# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

# What every target of the station's own code is compiled with. The Qt keywords are off because
# JUCE's headers are seen by the same files.
add_library(zorvi_options INTERFACE)
target_compile_definitions(zorvi_options INTERFACE QT_NO_KEYWORDS)
target_compile_options(zorvi_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_include_directories(zorvi_options INTERFACE ${PROJECT_SOURCE_DIR})
if(ZORVI_WARNINGS_AS_ERRORS)
    target_compile_options(zorvi_options INTERFACE -Werror)
endif()
