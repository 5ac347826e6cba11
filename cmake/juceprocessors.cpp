// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// AudioProcessor and AudioProcessorPlayer, which is all that the station calls of JUCE's modules
// audio_processors and audio_utils. As a whole these bring JUCE's windows, its drawing and its
// plug-in hosts: more to compile than all the other modules.

#include <juce_audio_utils/juce_audio_utils.h>

// The headers have colours as constants in every file that includes them.
#include <juce_graphics/colour/juce_Colour.cpp>

#include <juce_audio_utils/players/juce_AudioProcessorPlayer.cpp>

// JUCE 9 has the processors in a module without windows, which is compiled whole.
#if !JUCE_MODULE_AVAILABLE_juce_audio_processors_headless
#include <juce_audio_processors/processors/juce_AudioProcessor.cpp>
#include <juce_audio_processors/processors/juce_AudioProcessorParameterGroup.cpp>
#include <juce_audio_processors/utilities/juce_AudioProcessorParameterWithID.cpp>
// JUCE 8 has its bases in files of their own.
#if __has_include(<juce_audio_processors/utilities/juce_AAXClientExtensions.cpp>)
#include <juce_audio_processors/utilities/juce_AAXClientExtensions.cpp>
#include <juce_audio_processors/utilities/juce_VST2ClientExtensions.cpp>
#include <juce_audio_processors/utilities/juce_VST3ClientExtensions.cpp>
#endif
#endif
