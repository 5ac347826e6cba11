// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/unitinput.h"

#if JUCE_LINUX
#include <alsa/asoundlib.h>

namespace
{
/// The station's own client of the sequencer; null where there is none. Kept, because other
/// programs are told of each client that comes and goes.
snd_seq_t* sequencer()
{
    struct Closer {
        void operator()(snd_seq_t* handle) const { snd_seq_close(handle); }
    };
    static std::unique_ptr<snd_seq_t, Closer> kept;
    snd_seq_t* opened = nullptr;
    if (kept == nullptr && snd_seq_open(&opened, "default", SND_SEQ_OPEN_DUPLEX, 0) == 0) {
        kept.reset(opened);
        snd_seq_set_client_name(opened, "Zorvi Assembly Test");
    }
    return kept.get();
}

/// JUCE's identifier of a port is the number of its client, a hyphen and its own number. JUCE 9
/// puts a word before those of virtual ports.
snd_seq_addr_t addressOf(const juce::String& identifier)
{
    const auto numbers = identifier.trimCharactersAtStart("VIRTUAL");
    const auto client = numbers.upToFirstOccurrenceOf("-", false, false).getIntValue();
    const auto port = numbers.fromFirstOccurrenceOf("-", false, false).getIntValue();
    return {static_cast<unsigned char>(client), static_cast<unsigned char>(port)};
}

bool isSubscribed(const snd_seq_addr_t& port)
{
    snd_seq_port_info_t* info = nullptr;
    snd_seq_port_info_alloca(&info);
    return snd_seq_get_any_port_info(sequencer(), port.client, port.port, info) == 0 &&
           snd_seq_port_info_get_write_use(info) > 0;
}
} // namespace

std::unique_ptr<juce::MidiInput> unitinput::open(const juce::String& unit,
                                                 juce::MidiInputCallback* callback)
{
    if (unit.isEmpty())
        return nullptr;
    // Not the unit's name: this port must not be taken for a unit.
    auto input = juce::MidiInput::createNewDevice("Zorvi Assembly Test input", callback);
    if (input != nullptr)
        keepSubscribed(*input, unit);
    return input;
}

void unitinput::keepSubscribed(const juce::MidiInput& input, const juce::String& unit)
{
    const snd_seq_addr_t destination = addressOf(input.getIdentifier());
    if (sequencer() == nullptr || isSubscribed(destination))
        return;
    const snd_seq_addr_t source = addressOf(unit);
    snd_seq_port_subscribe_t* subscription = nullptr;
    snd_seq_port_subscribe_alloca(&subscription);
    snd_seq_port_subscribe_set_sender(subscription, &source);
    snd_seq_port_subscribe_set_dest(subscription, &destination);
    // The result is ignored: a unit that is gone again is tried at the next poll.
    snd_seq_subscribe_port(sequencer(), subscription);
}
#else
std::unique_ptr<juce::MidiInput> unitinput::open(const juce::String& unit,
                                                 juce::MidiInputCallback* callback)
{
    return juce::MidiInput::openDevice(unit, callback);
}

void unitinput::keepSubscribed(const juce::MidiInput&, const juce::String&) {}
#endif
