#include "endpoint.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace {

constexpr std::array<uint8_t, 12> kIpv4Prefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

}  // namespace

Endpoint makeEndpoint(std::span<const uint8_t> address, unsigned port) {
    Endpoint endpoint{.port = static_cast<uint16_t>(port)};
    uint8_t* to = endpoint.address.data();
    if (address.size() == 4) to = std::copy(kIpv4Prefix.begin(), kIpv4Prefix.end(), to);
    if (address.size() == 4 || address.size() == 16) std::copy(address.begin(), address.end(), to);
    return endpoint;
}

std::string toString(const Endpoint& endpoint) {
    const uint8_t* const octets = endpoint.address.data();
    const bool ipv4 = std::equal(kIpv4Prefix.begin(), kIpv4Prefix.end(), octets);
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (!ipv4) {
        inet_ntop(AF_INET6, octets, text.data(), text.size());
        return "[" + std::string(text.data()) + "]:" + std::to_string(endpoint.port);
    }
    char* end = text.data();
    for (size_t i = kIpv4Prefix.size(); i < endpoint.address.size(); ++i) {
        end = std::to_chars(end, end + 3, octets[i]).ptr;
        *end++ = i + 1 < endpoint.address.size() ? '.' : ':';
    }
    end = std::to_chars(end, end + 5, endpoint.port).ptr;
    return {text.data(), end};
}
