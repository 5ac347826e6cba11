# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

# JUCE comes as sources; it is compiled once, here, and its headers are SYSTEM to everyone else.
# JUCE accepts only its exact version, so it is asked for without one.
find_package(JUCE CONFIG REQUIRED)
find_package(PkgConfig REQUIRED)

# Debian's JUCE uses the system's copies of these libraries.
pkg_check_modules(ZORVI_JUCE_SYSTEM REQUIRED IMPORTED_TARGET
                  freetype2 libpng libjpeg flac vorbis vorbisenc vorbisfile ogg zlib)

add_library(zorvi_juce STATIC)
set_target_properties(zorvi_juce PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
target_link_libraries(zorvi_juce
    PRIVATE juce::juce_audio_utils
    INTERFACE PkgConfig::ZORVI_JUCE_SYSTEM)
target_compile_definitions(zorvi_juce
    PRIVATE JUCE_ALSA_MIDI_NAME="Zorvi"
    PUBLIC JUCE_WEB_BROWSER=0 JUCE_USE_CURL=0 JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1
    INTERFACE $<TARGET_PROPERTY:zorvi_juce,COMPILE_DEFINITIONS>)
target_include_directories(zorvi_juce SYSTEM
    INTERFACE $<TARGET_PROPERTY:zorvi_juce,INCLUDE_DIRECTORIES>)
target_compile_options(zorvi_juce PRIVATE -w)
