# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later

# JUCE comes as sources; what the station calls is compiled once, here, and JUCE's headers are SYSTEM
# to everyone else. JUCE accepts only its exact version, so it is asked for without one.
find_package(JUCE CONFIG REQUIRED)
find_package(PkgConfig REQUIRED)

# Debian's JUCE uses the system's copy of this library.
pkg_check_modules(ZORVI_JUCE_SYSTEM REQUIRED IMPORTED_TARGET zlib)

add_library(zorvi_juce STATIC ${CMAKE_CURRENT_LIST_DIR}/juceprocessors.cpp)
set_target_properties(zorvi_juce PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
# The module that takes longest is compiled first.
target_link_libraries(zorvi_juce
    PRIVATE juce::juce_core juce::juce_audio_basics juce::juce_audio_devices
            juce::juce_audio_formats
    INTERFACE PkgConfig::ZORVI_JUCE_SYSTEM)
if(TARGET juce::juce_audio_processors_headless)
    target_link_libraries(zorvi_juce PRIVATE juce::juce_audio_processors_headless)
endif()
target_compile_definitions(zorvi_juce
    PUBLIC JUCE_USE_CURL=0 JUCE_USE_FLAC=0 JUCE_USE_OGGVORBIS=0
           JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1
    INTERFACE $<TARGET_PROPERTY:zorvi_juce,COMPILE_DEFINITIONS>)
target_include_directories(zorvi_juce SYSTEM
    INTERFACE $<TARGET_PROPERTY:zorvi_juce,INCLUDE_DIRECTORIES>)
# The name of the station's MIDI client. JUCE 9.0.2 lacks the semicolon after it.
set(midi_name "\"Zorvi\"")
if(JUCE_VERSION VERSION_GREATER_EQUAL 9)
    string(APPEND midi_name "\\;")
    # In every program: MIDI 1.0.
    add_library(zorvi_midi2_absent OBJECT ${CMAKE_CURRENT_LIST_DIR}/midi2absent.cpp)
    target_link_libraries(zorvi_juce INTERFACE $<TARGET_OBJECTS:zorvi_midi2_absent>)
endif()
target_compile_options(zorvi_juce PRIVATE "-DJUCE_ALSA_MIDI_NAME=${midi_name}")
# A few functions of AudioProcessor name JUCE's windows. Nothing calls them, and the linker drops
# what nothing calls before it looks for what is missing.
target_compile_options(zorvi_juce PRIVATE -w -ffunction-sections)
target_link_options(zorvi_juce INTERFACE -Wl,--gc-sections)
