// Where a message comes from or goes to.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <span>
#include <string>

/// An IP address and a port. IPv4 is kept in IPv6's form for it, ::ffff:a.b.c.d.
struct Endpoint {
    std::array<uint8_t, 16> address{};
    uint16_t port = 0;

    auto operator<=>(const Endpoint&) const = default;
};

/// An endpoint of 4 octets of address, or 16; other sizes give an endpoint that nobody has.
Endpoint makeEndpoint(std::span<const uint8_t> address, unsigned port);

/// "192.0.2.1:1720", "[2001:db8::1]:1720"
std::string toString(const Endpoint& endpoint);
