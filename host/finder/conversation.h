// One TCP conversation: finds out what it carries, and reads the messages of both sides. If no
// message has announced its address, its octets are held until they show what they are, or until a
// message announces the address.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "message_finder.h"
#include "tpkt.h"

class Conversation : public StreamReader, private TpktReceiver {
  public:
    /// finder: must outlive the conversation. flow: from the client.
    Conversation(MessageFinder& finder, const Flow& flow);
    ~Conversation() override;

    // StreamReader
    bool octets(Time time, Side side, const StreamPart& part) override;
    void gap(Time time, Side side, size_t octets) override;
    void late(Time time, Side side, const StreamPart& part) override;
    void end(Time time) override;

    /// Must be called when the conversation has a message of the call that the finder looks for.
    void wanted();

  private:
    /// Octets of a segment, or a gap, that came before the purpose of the conversation was known.
    struct Held {
        Time time = 0;
        Side side = Side::kClient;
        bool isGap = false;
        size_t gap = 0;  // octets; 0 if unknown
        std::vector<uint8_t> octets{};
        std::vector<FrameRun> runs{};
    };

    // TpktReceiver
    void tpkt(std::span<const uint8_t> message, std::span<const FrameId> frames) override;
    void lost(size_t octets) override;

    void hold(Held held);
    void release();
    std::optional<Known> judge(Side side, bool& isForeign);
    void start(const Known& known);
    void read(Time time, Side side, const StreamPart& part);
    void remark(Time time, Side side, Remark what, size_t octets);
    TpktReader& tpktOf(Side side) { return side == Side::kClient ? client_ : server_; }
    Flow flowOf(Side side) const { return side == Side::kClient ? flow_ : flow_.reversed(); }

    MessageFinder& finder_;
    Flow flow_;
    std::optional<Known> known_;  // what the conversation is for
    TpktReader client_;
    TpktReader server_;

    // Until known_ is set:
    std::vector<Held> held_;
    size_t heldOctets_ = 0;  // octets that held_ costs
    bool hasTpkts_ = false;  // there are TPKTs, but not of Q.931

    // The part that a reader reads now:
    Time now_ = 0;
    Side side_ = Side::kClient;

    // If the finder looks for one call: whether the conversation belongs to it, and the remarks
    // until this is known.
    bool isWanted_ = false;
    std::vector<CaptureRemark> remarks_;
};
