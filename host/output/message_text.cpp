#include "message_text.h"

#include <algorithm>

void appendMessageText(std::string& text, const CapturedMessage& message,
                       const MessageDetails& details) {
    text += message.name;
    if (!details.summary.empty()) text.append(" ").append(details.summary);
    if (message.transport == Transport::kTunnel) text += ", tunnelled";
    if (message.transport == Transport::kFastStart) text += ", fastStart";
    if (message.outcome == Outcome::kBare) text += ", without a user-user element";
    if (message.outcome == Outcome::kRefused) text.append(": refused: ").append(message.reason);
}

std::vector<std::string_view> wrapped(std::string_view text, size_t width) {
    std::vector<std::string_view> lines;
    width = std::max<size_t>(width, 1);
    while (text.size() > width) {
        size_t at = text.rfind(' ', width);
        if (at == std::string_view::npos || at == 0) at = width;
        lines.push_back(text.substr(0, at));
        text.remove_prefix(at);
        while (text.starts_with(' ')) text.remove_prefix(1);
    }
    if (!text.empty() || lines.empty()) lines.push_back(text);
    return lines;
}
