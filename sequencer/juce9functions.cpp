// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// What JUCE 9 calls beside the functions of sequencerfunctions.cpp, in a program in which
// cmake/midi2absent.cpp hides the system library's functions for MIDI 2.0.

#include <cerrno>

#include <alsa/asoundlib.h>

int snd_seq_get_client_info(snd_seq_t*, snd_seq_client_info_t*)
{
    return 0; // of the answer only the name is read
}

int snd_seq_get_any_client_info(snd_seq_t*, int, snd_seq_client_info_t*)
{
    return 0; // as above
}

const char* snd_seq_client_info_get_name(snd_seq_client_info_t*)
{
    return "Zorvi";
}

int snd_seq_alloc_queue(snd_seq_t*)
{
    return -ENOMEM; // without a queue JUCE takes the time itself
}

void snd_seq_port_subscribe_set_queue(snd_seq_port_subscribe_t*, int) {}
void snd_seq_port_subscribe_set_time_real(snd_seq_port_subscribe_t*, int) {}
void snd_seq_port_subscribe_set_time_update(snd_seq_port_subscribe_t*, int) {}

int snd_seq_disconnect_from(snd_seq_t*, int, int, int)
{
    return 0; // the port is deleted next, and its subscriptions with it
}

int snd_seq_disconnect_to(snd_seq_t*, int, int, int)
{
    return 0; // as above
}
