#include "html_report.h"

#include <algorithm>

#include "json_lines.h"
#include "json_text.h"
#include "page.h"
#include "tally.h"
#include "text_format.h"

namespace {

using Json = nlohmann::ordered_json;

std::string_view nameOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::kDecoded:
            return "decoded";
        case Outcome::kRefused:
            return "refused";
        default:
            return "bare";
    }
}

Json jsonOf(const EndpointRecord& endpoint) {
    const bool isAnswered = endpoint.gatekeeper != Address{};
    return {{"host", toString(endpoint.host)},
            {"alias", endpoint.alias},
            {"identifier", endpoint.identifier},
            {"gatekeeper", isAnswered ? Json(toString(endpoint.gatekeeper)) : Json()},
            {"state", endpoint.state},
            {"why", endpoint.why},
            {"start", dateText(endpoint.start)},
            {"end", dateText(endpoint.end)},
            {"messages", endpoint.messages},
            {"refused", endpoint.refused}};
}

/// Escapes each '<', so that no text looks like the end of the script element.
void escapeMarkup(std::string& json) {
    for (size_t at = 0; (at = json.find('<', at)) != std::string::npos;)
        json.replace(at, 1, "\\u003c");
}

}  // namespace

HtmlReport::HtmlReport(const std::string& file, const std::vector<std::string>& captures,
                       const TamselModules& modules)
    : file_(file), page_(file, std::ios::binary), blocks_(page_), details_(modules) {
    if (!page_) throw std::runtime_error(file + ": cannot be written");
    about_ = {{"files", captures}, {"calls", Json::array()}, {"endpoints", Json::array()}};
    page_ << kPageHead;
}

bool HtmlReport::begin(Json& object, const Flow& flow, const CallRecord* call) {
    if (number_ == kMaxMessages) {
        ++omitted_;
        return false;
    }
    object["number"] = ++number_;
    object["callNumber"] = call == nullptr ? Json() : Json(call->number);
    if (call != nullptr)
        calls_.insert(call->number);
    else
        hosts_.insert({flow.source.address, flow.destination.address});
    return true;
}

void HtmlReport::message(const CapturedMessage& message, const MessageDetails& details,
                         const CallRecord* call) {
    Json object;
    if (!begin(object, message.flow, call)) return;
    appendMessage(object, message, details);
    object.erase("octets");
    object["outcome"] = nameOf(message.outcome);
    object["summary"] = details.summary;
    std::string selected;
    details_.append(selected, message);
    blocks_.add(object, selected);
    ++messages_;
}

void HtmlReport::remark(const CaptureRemark& remark, const CallRecord* call) {
    Json object;
    if (!begin(object, remark.flow, call)) return;
    object["time"] = dateText(remark.time);
    object["from"] = toString(remark.flow.source);
    object["to"] = toString(remark.flow.destination);
    object["loss"] = describe(remark);
    blocks_.add(object, R"({"octets":"","dump":[],"fields":[]})");
}

void HtmlReport::forgotten(const CallRecord& call, const CallBook& /*book*/) {
    if (!calls_.contains(call.number)) return;
    Json object;
    appendCall(object, call);
    about_["calls"].push_back(std::move(object));
}

void HtmlReport::end(const CallBook& book) {
    blocks_.finish();
    for (const CallRecord& call : book.calls()) forgotten(call, book);
    for (const EndpointRecord& endpoint : book.endpoints())
        if (hosts_.contains(endpoint.host)) about_["endpoints"].push_back(jsonOf(endpoint));
    about_["messages"] = messages_;
    about_["omitted"] = omitted_;
    std::string text;
    appendJson(text, about_);
    escapeMarkup(text);
    page_ << "<script type=\"application/json\" id=\"report\">" << text << "</script>" << kPageTail;
    page_.close();
    if (!page_) throw std::runtime_error(file_ + ": writing failed");
}
