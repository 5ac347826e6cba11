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

class Unit
{
public:
    Unit()
    {
        snd_seq_open(&sequencer, "default", SND_SEQ_OPEN_DUPLEX, 0);
        port = snd_seq_create_simple_port(sequencer, "Zorvi_Control",
                                          SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ,
                                          SND_SEQ_PORT_TYPE_MIDI_GENERIC);
    }

    void work(int componentNum)
    {
        snd_seq_event_t event;
        snd_seq_ev_clear(&event);
        if (roster::kindOf(componentNum) == roster::Kind::Button) {
            const auto note = static_cast<unsigned char>(unitmessages::noteOf(componentNum));
            snd_seq_ev_set_noteon(&event, 0, note, 127);
            send(event);
            snd_seq_ev_set_noteon(&event, 0, note, 0);
            send(event);
            return;
        }
        const auto controller = static_cast<unsigned>(unitmessages::controllerOf(componentNum));
        for (int value = 0; value <= 127; ++value) {
            snd_seq_ev_set_controller(&event, 0, controller, value);
            send(event);
        }
    }

private:
    void send(snd_seq_event_t event)
    {
        snd_seq_ev_set_source(&event, static_cast<unsigned char>(port));
        snd_seq_ev_set_subs(&event);
        snd_seq_ev_set_direct(&event);
        snd_seq_event_output_direct(sequencer, &event);
        std::this_thread::sleep_for(1ms);
    }

    snd_seq_t* sequencer = nullptr;
    int port = -1;
};

void playOneRun()
{
    std::this_thread::sleep_for(1s); // the station starts without a unit
    Unit unit;
    std::this_thread::sleep_for(3s); // the station finds it, the serial number is typed
    for (int c = roster::firstComponent; c <= roster::lastComponent; ++c)
        if (c != roster::channelButton && c != roster::powerButton)
            unit.work(c);
}

[[maybe_unused]] const bool started = [] {
    std::thread(playOneRun).detach();
    return true;
}();
} // namespace
