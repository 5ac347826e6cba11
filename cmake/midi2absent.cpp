// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// JUCE 9 uses the system library's functions for MIDI 2.0 if they are there: its references to them
// are weak. With them it misses ports that come and go where the kernel's sequencer has no MIDI 2.0
// (seen on Linux 6.1; Debian's kernels up to 7.2 have none). Those below are the ones that it asks
// for. As weak symbols that no other library may define they are null in a program that contains
// this file, and JUCE does with MIDI 1.0, which is what the unit speaks.

extern "C" {
[[gnu::weak, gnu::visibility("hidden")]] extern const char snd_seq_client_info_get_midi_version,
    snd_seq_create_ump_endpoint, snd_seq_get_ump_endpoint_info, snd_seq_port_info_get_direction,
    snd_seq_port_info_get_ump_group, snd_seq_set_client_midi_version, snd_seq_set_ump_block_info,
    snd_seq_ump_event_input, snd_seq_ump_event_output_direct;
}

namespace
{
// A symbol that nothing refers to would not be in the file.
[[gnu::used]] const char* const absent[] = {
    &snd_seq_client_info_get_midi_version, &snd_seq_create_ump_endpoint,
    &snd_seq_get_ump_endpoint_info,        &snd_seq_port_info_get_direction,
    &snd_seq_port_info_get_ump_group,      &snd_seq_set_client_midi_version,
    &snd_seq_set_ump_block_info,           &snd_seq_ump_event_input,
    &snd_seq_ump_event_output_direct,
};
} // namespace
