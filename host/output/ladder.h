// The ladder diagram of a call: a column for each host, an arrow for each message.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "screen.h"
#include "view.h"
#include "writer.h"

/// Keeps all steps until the end, because the columns of the first arrow depend on all hosts. If
/// the steps need more than kMaxKept octets, draws those that it has, and begins another diagram.
class Ladder : public View {
  public:
    Ladder(Writer& writer, const Screen& screen) : writer_(writer), screen_(screen) {}

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void remark(const CaptureRemark& remark, const CallRecord* call) override;
    void forgotten(const CallRecord& call, const CallBook& book) override;
    void end(const CallBook& book) override;
    bool needsCalls() const override { return true; }

  private:
    static constexpr size_t kMaxKept = 16 << 20;  // octets

    /// An arrow: a message or a loss.
    struct Step {
        Time time = 0;
        uint32_t frame = 0;  // its number; 0 if unknown
        size_t from = 0;     // the column of the sender
        size_t to = 0;       // the column of the receiver
        FamilyId family = FamilyId::kRas;
        bool isLoss = false;
        bool isRefused = false;
        size_t call = 0;  // its number; 0 outside calls
        std::string text;
    };
    /// The positions in a line, in characters. A lane is the vertical line of a host.
    struct Layout {
        size_t frameWidth = 0;  // 0 if no frame has a number
        size_t timeWidth = 0;
        bool hasAddresses = true;  // whether addresses are above the lanes; otherwise letters
        size_t lane = 0;           // the position of the first lane
        size_t pitch = 0;          // from one lane to the next; 0 if there are no lanes
        size_t text = 0;           // the position of the text
    };

    size_t columnOf(const Address& host);
    void keep(Step step, const CallRecord* call);
    Layout layOut() const;
    void draw();
    void drawHeading(const CallRecord& call);
    void drawHosts(const Layout& layout);
    void drawStep(const Layout& layout, const Step& step);
    std::string label(size_t column) const;
    std::string timeText(Time time) const;
    void appendLanes(std::string& line, const Layout& layout, const Step* step) const;

    Writer& writer_;
    const Screen& screen_;
    std::vector<Address> hosts_;         // by column
    std::map<Address, size_t> columns_;  // of the hosts
    std::vector<Step> steps_;
    size_t kept_ = 0;            // octets that steps_ costs
    std::set<size_t> calls_;     // the numbers of the calls of all steps
    std::optional<Time> start_;  // of the first step
};
