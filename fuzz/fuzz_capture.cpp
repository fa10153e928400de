// Frames of a capture through tamsel-capture's reader, to the dumps. An input is what stands behind
// a pcap file's header: records of 16 octets of header, then a frame.

#include <cstring>

#include "call_follower.h"

namespace {

struct NoSink : MessageSink {
    void message(const CapturedMessage& message) override {
        if (message.dump && (message.octets.size() > kMaxMessageOctets || message.name.empty()))
            std::abort();
    }
    void remark(const CaptureRemark& /*remark*/) override {}
};

constexpr int kEthernet = 1;
constexpr size_t kRecordHeader = 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MessageDumper dumper;
    NoSink sink;
    CallFollower follower(dumper, sink, size % 2 == 0 ? "" : "c0fe");
    Network network(follower);
    for (std::span<const uint8_t> rest(data, size); rest.size() > kRecordHeader;) {
        uint32_t length = 0;
        std::memcpy(&length, rest.data() + 8, sizeof length);
        rest = rest.subspan(kRecordHeader);
        const size_t taken = std::min<size_t>(length, rest.size());
        network.frame(kEthernet, {.time = static_cast<Time>(rest.size()),
                                  .octets = rest.first(taken),
                                  .length = length});
        rest = rest.subspan(taken);
    }
    network.end();
    return 0;
}
