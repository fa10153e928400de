// Where a message comes from or goes to.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// An IP address. IPv4 is kept in IPv6's form for it, ::ffff:a.b.c.d.
using Address = std::array<uint8_t, 16>;

/// An IP address and a port.
struct Endpoint {
    Address address{};
    uint16_t port = 0;

    auto operator<=>(const Endpoint&) const = default;
};

/// One direction of a conversation.
struct Flow {
    Endpoint source;
    Endpoint destination;

    auto operator<=>(const Flow&) const = default;
    Flow reversed() const { return {destination, source}; }
};

/// An address of 4 octets or 16; other sizes give an address that is not in use.
Address makeAddress(std::span<const uint8_t> octets);
Endpoint makeEndpoint(std::span<const uint8_t> address, unsigned port);

/// Reads an address of either version. Returns nothing if a text is none.
std::optional<Address> readAddress(const std::string& text);

/// "192.0.2.1:1720", "[2001:db8::1]:1720"
void appendText(std::string& text, const Endpoint& endpoint);
std::string toString(const Endpoint& endpoint);
/// The same without a port: "192.0.2.1", "2001:db8::1"
std::string toString(const Address& address);
