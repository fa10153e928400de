#include "page_details.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "json_dump.h"
#include "json_text.h"
#include "text_format.h"

namespace {

using Json = nlohmann::ordered_json;

/// Writes texts, without the beginning that each has in common with the one before. The texts are
/// names of the notation, so that nothing in them has to be escaped.
class SharedTexts {
  public:
    void append(std::string& json, std::string_view text) {
        const auto ends = std::ranges::mismatch(last_, text);
        const auto shared = static_cast<size_t>(ends.in1 - last_.begin());
        json += last_.empty() ? '[' : ',';
        appendDigits(json, static_cast<int64_t>(shared));
        json.append(",\"").append(text.substr(shared)).append("\",");
        last_ = text;
    }
    /// Ends the array.
    void finish(std::string& json) const { json += last_.empty() ? "[]" : "]"; }

  private:
    std::string last_;
};

void appendLines(std::string& json, const CapturedMessage& message) {
    SharedTexts paths;
    if (message.outcome == Outcome::kDecoded) {
        Json values = Json::array();
        appendDump(values, *message.decoder);
        for (const Json& line : values) {
            paths.append(json, line["path"].get_ref<const std::string&>());
            appendJson(json, line["value"]);
        }
    }
    paths.finish(json);
}

}  // namespace

PageDetails::PageDetails(const TamselModules& modules)
    : modules_(modules), tracer_(std::make_unique<TamselDecoder>()) {
}

void PageDetails::append(std::string& json, const CapturedMessage& message) {
    json += "{\"octets\":\"";
    appendHex(json, message.octets);
    json += "\",\"dump\":";
    appendLines(json, message);
    json += ",\"fields\":";
    appendFields(json, message);
    json += '}';
}

void PageDetails::appendFields(std::string& json, const CapturedMessage& message) {
    SharedTexts names;
    if (!message.encoding.empty()) {
        // If the message is refused, it has the fields up to the failure.
        (void)tracer_->decodeTraced(familyOf(modules_, message.family), message.encoding, true);
        const auto added = static_cast<int64_t>(message.encoding.size() - message.octets.size());
        for (const AsnBitFieldLink* link = tracer_->fields().head; link != nullptr;
             link = link->next) {
            const int64_t first = link->field->bitOffset - 8 * added;
            if (first < 0) continue;
            names.append(json, link->field->name);
            appendDigits(json, first);
            json += ',';
            appendDigits(json, link->field->bitCount);
        }
    }
    names.finish(json);
}
