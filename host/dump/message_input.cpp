#include "message_input.h"

#include <fstream>
#include <iostream>
#include <iterator>

#include "q931.h"
#include "terminal.h"
#include "tpkt.h"

namespace {

std::string readAll(const std::string& file) {
    if (file == "-") {
        makeInputBinary();
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    std::ifstream in(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
    if (!in) throw BadInput(file + ": cannot be read");
    return text;
}

/// Removes TPKT and Q.931, if the octets have them. Several TPKTs are several messages.
std::vector<Octets> strip(const InputMessage& message, bool hasQ931) {
    std::vector<Octets> inner;
    if (looksWrapped(message.octets, false)) {
        std::span<const uint8_t> rest = message.octets;
        while (const size_t length = wholeTpkt(rest)) {
            const auto content = rest.first(length).subspan(kTpktHeader);
            inner.emplace_back(content.begin(), content.end());
            rest = rest.subspan(length);
        }
        if (!rest.empty())
            throw BadInput(message.name + ": " + std::to_string(rest.size()) + " of " +
                           std::to_string(message.octets.size()) +
                           " octets are not in a complete TPKT");
    } else {
        inner.push_back(message.octets);
    }
    for (Octets& octets : inner) {
        if (!hasQ931 || !startsQ931(octets)) continue;
        Q931Message q931;
        if (!readQ931(octets, q931) || q931.userUser.empty())
            throw BadInput(message.name + ": no complete Q.931 message with a user-user element");
        octets = Octets(q931.userUser.begin(), q931.userUser.end());
    }
    return inner;
}

}  // namespace

bool looksWrapped(std::span<const unsigned char> octets, bool hasQ931) {
    const bool hasTpkt = octets.size() > 1 && octets[0] == 3 && octets[1] == 0;
    return hasTpkt || (hasQ931 && startsQ931(octets));
}

std::vector<InputMessage> readMessages(const std::string& file, const InputOptions& options) {
    const std::string name = file == "-" ? "standard input" : file;
    const std::string input = readAll(file);
    std::vector<PastedMessage> pasted;
    try {
        if (isText(input))
            pasted = parseMessages(input, options.joined);
        else
            pasted.push_back({Octets(input.begin(), input.end()), 1});
    } catch (const BadHex& bad) {
        throw BadInput(name + ": " + bad.what());
    }
    if (pasted.empty()) throw BadInput(name + ": no message");
    std::vector<InputMessage> messages;
    for (PastedMessage& one : pasted) {
        InputMessage message{name, std::move(one.octets)};
        if (pasted.size() > 1) message.name += ":" + std::to_string(one.line);
        if (!options.strips) {
            messages.push_back(std::move(message));
            continue;
        }
        std::vector<Octets> inner = strip(message, options.hasQ931);
        for (size_t i = 0; i < inner.size(); ++i) {
            const std::string number =
                inner.size() > 1 ? " (message " + std::to_string(i + 1) + ")" : "";
            messages.push_back({message.name + number, std::move(inner[i])});
        }
    }
    return messages;
}
