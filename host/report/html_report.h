// --html: one page that shows the calls of a capture, and needs nothing else.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "page_blocks.h"
#include "page_details.h"
#include "view.h"

/// Writes the page while the capture is read. Holds the calls and one block of messages. Throws
/// std::runtime_error if something cannot be written.
class HtmlReport : public View {
  public:
    /// More messages are left out, which the page says: browsers hold no more with ease.
    static constexpr size_t kMaxMessages = 100000;

    /// file: is overwritten; captures: their names, as the page shows them
    HtmlReport(const std::string& file, const std::vector<std::string>& captures,
               const TamselModules& modules);

    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void remark(const CaptureRemark& remark, const CallRecord* call) override;
    void forgotten(const CallRecord& call, const CallBook& book) override;
    /// Ends the page.
    void end(const CallBook& book) override;
    bool needsCalls() const override { return true; }

  private:
    using Json = nlohmann::ordered_json;

    /// Begins the next message or remark, if there is room for it.
    bool begin(Json& object, const Flow& flow, const CallRecord* call);

    std::string file_;
    std::ofstream page_;
    PageBlocks blocks_;
    PageDetails details_;
    size_t number_ = 0;  // of messages and remarks
    size_t messages_ = 0;
    size_t omitted_ = 0;
    std::set<size_t> calls_;   // the numbers of those that have a message in the page
    std::set<Address> hosts_;  // those that said something outside calls
    Json about_;               // what is not in blocks
};
