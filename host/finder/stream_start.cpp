#include "stream_start.h"

#include "octets.h"
#include "q931.h"
#include "tpkt.h"

StreamStart lookAtStart(std::span<const uint8_t> octets) {
    while (!octets.empty()) {
        if (octets[0] != 3 || (octets.size() > 1 && octets[1] != 0))
            return {StreamStart::kForeign, {}};
        if (octets.size() < kTpktHeader) break;
        const size_t length = be16(octets, 2);
        if (length < kTpktHeader || length > kMaxStreamStart) return {StreamStart::kForeign, {}};
        if (octets.size() < length) break;
        const auto message = octets.first(length).subspan(kTpktHeader);
        if (!message.empty()) {
            // H.225.0 uses call references of two octets. All information elements must be whole.
            Q931Message q931;
            const bool isQ931 = message.size() > 4 && message[1] == 2 && readQ931(message, q931);
            return {isQ931 ? StreamStart::kSignalling : StreamStart::kOther, message};
        }
        octets = octets.subspan(length);  // an empty one keeps the connection alive
    }
    return {};
}
