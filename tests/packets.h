// For the tests of tamsel-capture: sends IPv4 packets to a network.
#pragma once

#include <pcap/pcap.h>

#include <string>

#include "hex_text.h"
#include "network.h"
#include "support.h"

/// A network to which a test sends packets. Each packet is a frame.
struct Packets {
    Packets(NetworkListener& listener, MemoryBudget& budget, Unread& unread)
        : network(listener, budget, unread) {}

    /// A packet from a host to itself, in a frame of its own.
    ///   flags  0x2000 if more fragments follow, plus the fragment offset, in units of 8 octets
    void packet(Time time, unsigned id, unsigned flags, uint8_t protocol, const char* payload) {
        Octets octets = hex("4500 0000 0000 0000 4000 0000 0a000001 0a000001");
        const Octets rest = hex(payload);
        octets[2] = static_cast<uint8_t>((20 + rest.size()) >> 8);
        octets[3] = static_cast<uint8_t>(20 + rest.size());
        octets[4] = static_cast<uint8_t>(id >> 8);
        octets[5] = static_cast<uint8_t>(id);
        octets[6] = static_cast<uint8_t>(flags >> 8);
        octets[7] = static_cast<uint8_t>(flags);
        octets[9] = protocol;
        octets.insert(octets.end(), rest.begin(), rest.end());
        network.frame({.id = {0, ++frames},
                       .time = time,
                       .linkType = DLT_RAW,
                       .octets = octets,
                       .length = octets.size()});
    }

    /// Sends a TCP segment between ports 5000 and 1720. All texts are in hex, the numbers with 8
    /// digits and the flags with 2.
    void segment(Time time, const std::string& sequence, const std::string& acknowledged,
                 const std::string& flags, const std::string& payload, bool fromServer = false) {
        const std::string ports = fromServer ? "06b8 1388" : "1388 06b8";
        packet(
            time, 1, 0, 6,
            (ports + sequence + acknowledged + "50" + flags + "2000 0000 0000" + payload).c_str());
    }

    uint32_t frames = 0;
    Network network;
};
