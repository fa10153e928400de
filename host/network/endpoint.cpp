#include "endpoint.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace {

constexpr std::array<uint8_t, 12> kIpv4Prefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

}  // namespace

Address makeAddress(std::span<const uint8_t> octets) {
    Address address{};
    uint8_t* to = address.data();
    if (octets.size() == 4) to = std::copy(kIpv4Prefix.begin(), kIpv4Prefix.end(), to);
    if (octets.size() == 4 || octets.size() == 16) std::copy(octets.begin(), octets.end(), to);
    return address;
}

Endpoint makeEndpoint(std::span<const uint8_t> address, unsigned port) {
    return {makeAddress(address), static_cast<uint16_t>(port)};
}

std::optional<Address> readAddress(const std::string& text) {
    std::array<uint8_t, 16> octets{};
    if (inet_pton(AF_INET, text.c_str(), octets.data()) == 1)
        return makeAddress(std::span(octets).first(4));
    if (inet_pton(AF_INET6, text.c_str(), octets.data()) == 1) return octets;
    return {};
}

void appendText(std::string& text, const Endpoint& endpoint) {
    const uint8_t* const octets = endpoint.address.data();
    const bool ipv4 = std::equal(kIpv4Prefix.begin(), kIpv4Prefix.end(), octets);
    std::array<char, INET6_ADDRSTRLEN + 8> digits{};
    char* end = digits.data();
    if (ipv4) {
        for (size_t i = kIpv4Prefix.size(); i < endpoint.address.size(); ++i) {
            end = std::to_chars(end, end + 3, octets[i]).ptr;
            *end++ = i + 1 < endpoint.address.size() ? '.' : ':';
        }
    } else {
        inet_ntop(AF_INET6, octets, digits.data(), INET6_ADDRSTRLEN);
        text.append("[").append(digits.data()).append("]:");
    }
    end = std::to_chars(end, end + 5, endpoint.port).ptr;
    text.append(digits.data(), end);
}

std::string toString(const Endpoint& endpoint) {
    std::string text;
    appendText(text, endpoint);
    return text;
}

std::string toString(const Address& address) {
    std::string text;
    appendText(text, Endpoint{address, 0});
    text.resize(text.rfind(':'));
    const bool isBracketed = text.starts_with('[');
    return isBracketed ? text.substr(1, text.size() - 2) : text;
}
