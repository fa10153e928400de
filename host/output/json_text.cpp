#include "json_text.h"

#include <nlohmann/json.hpp>

void appendJson(std::string& text, const nlohmann::ordered_json& value) {
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    text += value.dump(-1, ' ', true, kReplace);
}
