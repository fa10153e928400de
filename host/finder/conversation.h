// One TCP conversation: what it is, and the messages of its two sides. If no message has announced
// it, it is held until its first octets tell, or an announcement comes late.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "message_finder.h"
#include "tpkt.h"

class Conversation : public StreamReader, private TpktReceiver {
  public:
    /// flow: from the client.
    Conversation(MessageFinder& finder, const Flow& flow);
    ~Conversation() override;

    // StreamReader
    bool octets(Time time, Side side, const StreamPart& part) override;
    void gap(Time time, Side side, size_t octets) override;
    void late(Time time, Side side, const StreamPart& part) override;
    void end(Time time) override;

    /// Tells that the conversation has a message of the call that is looked for.
    void wanted();

  private:
    /// Octets, or a gap, that came before it was known what the conversation is.
    struct Held {
        Time time = 0;
        Side side = Side::kClient;
        bool isGap = false;
        size_t gap = 0;
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
    std::optional<Known> known_;
    TpktReader client_;
    TpktReader server_;

    // While nothing is known:
    std::vector<Held> held_;
    size_t heldOctets_ = 0;
    bool hasTpkts_ = false;

    // While the readers run:
    Time now_ = 0;
    Side side_ = Side::kClient;

    // If one call is looked for: whether this conversation has it, and what was remarked before
    // that was known.
    bool isWanted_ = false;
    std::vector<CaptureRemark> remarks_;
};
