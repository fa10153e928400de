// --html: writes one page that shows the calls of a capture. It needs no other file.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "page_blocks.h"
#include "page_details.h"
#include "view.h"

/// The page is written while the capture is read. Only the calls and one block of messages are in
/// memory. Throws std::runtime_error if something cannot be written.
class HtmlReport : public View {
  public:
    /// Messages and remarks in the page, because browsers become slow with more. The page says how
    /// many others there are.
    static constexpr size_t kMaxMessages = 100000;

    ///   file      the page, which is overwritten
    ///   captures  the names of the captures, as the page shows them
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

    /// Begins the next message or remark. Returns false if the page has no room for it.
    bool begin(Json& object, const Flow& flow, const CallRecord* call);

    std::string file_;
    std::ofstream page_;
    PageBlocks blocks_;
    PageDetails details_;
    size_t number_ = 0;  // of the last message or remark
    size_t messages_ = 0;
    size_t omitted_ = 0;
    std::set<size_t> calls_;   // the numbers of the calls that have a message in the page
    std::set<Address> hosts_;  // the hosts that have a message outside calls in the page
    Json about_;               // all that is not in blocks
};
