// The ladder diagram of a call: a column for each host, an arrow for each message.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "screen.h"
#include "view.h"
#include "writer.h"

/// Keeps what it draws until the end, because it takes all hosts to draw the first arrow. Beyond
/// kMaxKept it draws what it has.
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
    void drawHeading(const CallRecord& call);

    static constexpr size_t kMaxKept = 16 << 20;  // octets

    struct Step {
        Time time = 0;
        uint32_t frame = 0;
        size_t from = 0;  // columns
        size_t to = 0;
        FamilyId family = FamilyId::kRas;
        bool isLoss = false;
        bool isRefused = false;
        size_t call = 0;  // its number; 0 outside calls
        std::string text;
    };
    /// Where things are in a line.
    struct Layout {
        size_t frameWidth = 0;  // 0 if no frame has a number
        size_t timeWidth = 0;
        bool hasAddresses = true;  // above the lanes; else letters
        size_t lane = 0;           // the column of the first host
        size_t pitch = 0;          // columns from one host to the next; 0 if there are no lanes
        size_t text = 0;           // the first column of the text
    };

    size_t columnOf(const Address& host);
    void keep(Step step, const CallRecord* call);
    Layout layOut() const;
    void draw();
    void drawHosts(const Layout& layout);
    void drawStep(const Layout& layout, const Step& step);
    std::string label(size_t column) const;
    std::string timeText(Time time) const;
    void appendLanes(std::string& line, const Layout& layout, const Step* step) const;
    std::string line(const Layout& layout) const;

    Writer& writer_;
    const Screen& screen_;
    std::vector<Address> hosts_;
    std::map<Address, size_t> columns_;
    std::vector<Step> steps_;
    size_t kept_ = 0;
    std::set<size_t> calls_;  // the numbers of those whose messages were kept
    std::optional<Time> start_;
};
