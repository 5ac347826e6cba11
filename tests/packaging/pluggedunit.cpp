// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// A unit for an installed station on a machine without MIDI. Preloaded into the unchanged program,
// this library replaces the system library's sequencer functions. A thread plugs in a unit and
// works every control once, in the order of a run.

#include "unit/unitmessages.h"

#include <alsa/asoundlib.h>

#include <chrono>
#include <thread>

namespace
{
using namespace std::chrono_literals;

void send(snd_seq_t* sequencer, int port, snd_seq_event_t event)
{
    snd_seq_ev_set_source(&event, static_cast<unsigned char>(port));
    snd_seq_ev_set_subs(&event);
    snd_seq_ev_set_direct(&event);
    snd_seq_event_output_direct(sequencer, &event);
    std::this_thread::sleep_for(1ms);
}

/// A fader or rotary moved upwards; a button pressed and slowly released.
void work(snd_seq_t* sequencer, int port, int componentNum)
{
    const bool isButton = roster::kindOf(componentNum) == roster::Kind::Button;
    for (int value = 0; value <= 127; ++value) {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        if (isButton)
            snd_seq_ev_set_noteon(&event, 0, unitmessages::noteOf(componentNum), 127 - value);
        else
            snd_seq_ev_set_controller(&event, 0, unitmessages::controllerOf(componentNum), value);
        send(sequencer, port, event);
    }
}

void playOneRun()
{
    std::this_thread::sleep_for(1s); // the station starts without a unit
    snd_seq_t* sequencer = nullptr;
    snd_seq_open(&sequencer, "default", SND_SEQ_OPEN_DUPLEX, 0);
    const int port = snd_seq_create_simple_port(sequencer, "Zorvi_Control",
                                                SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ,
                                                SND_SEQ_PORT_TYPE_MIDI_GENERIC);
    std::this_thread::sleep_for(3s); // the station finds it, the serial number is typed
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (c != roster::channelButton && c != roster::powerButton)
            work(sequencer, port, c);
}

[[maybe_unused]] const bool started = [] {
    std::thread(playOneRun).detach();
    return true;
}();
} // namespace
