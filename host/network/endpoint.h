// IP addresses and ports.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// An IPv6 address, or an IPv4 address as ::ffff:a.b.c.d.
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

/// Makes an address of 4 or 16 octets. Any other size gives the address ::, which no host has.
Address makeAddress(std::span<const uint8_t> octets);
Endpoint makeEndpoint(std::span<const uint8_t> address, unsigned port);

/// Reads an IPv4 or IPv6 address. Returns nothing if the text is none.
std::optional<Address> readAddress(const std::string& text);

/// "192.0.2.1:1720", "[2001:db8::1]:1720"
void appendText(std::string& text, const Endpoint& endpoint);
std::string toString(const Endpoint& endpoint);
/// The same without a port: "192.0.2.1", "2001:db8::1"
std::string toString(const Address& address);
