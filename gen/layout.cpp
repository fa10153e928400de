#include "layout.h"

#include <algorithm>
#include <vector>

namespace {

constexpr size_t kColumns = 100;
constexpr size_t kIndent = 4;

/// A line of source: its code, with its margin, and a comment after it or alone.
struct Line {
    std::string code;
    std::string comment;
};

/// The first position from `from` on of one of the characters outside of literals, or npos.
size_t findCode(std::string_view line, size_t from, std::string_view characters) {
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (!quoted && i >= from && characters.find(line[i]) != std::string_view::npos) return i;
        if (quoted && line[i] == '\\')
            ++i;
        else if (line[i] == '"')
            quoted = !quoted;
    }
    return std::string_view::npos;
}

Line split(std::string_view line) {
    size_t slash = findCode(line, 0, "/");
    while (slash != std::string_view::npos && line.substr(slash, 2) != "//")
        slash = findCode(line, slash + 1, "/");
    if (slash == std::string_view::npos) return {std::string(line), ""};
    std::string code(line.substr(0, slash));
    if (code.find_first_not_of(' ') != std::string::npos)
        code.erase(code.find_last_not_of(' ') + 1);
    return {code, std::string(line.substr(slash))};
}

bool isBlank(const std::string& code) {
    return code.find_first_not_of(' ') == std::string::npos;
}

/// Adds a comment that stands alone. None of its lines ends with a backslash, which would make the
/// next line part of it.
void addComment(std::string& out, const std::string& margin, std::string_view comment) {
    const size_t room = kColumns - margin.size();
    std::string rest;
    while (comment.size() > room) {
        size_t cut = comment.rfind(' ', room);
        while (cut != std::string_view::npos && cut > 3 && comment[cut - 1] == '\\')
            cut = comment.rfind(' ', cut - 1);
        if (cut == std::string_view::npos || cut <= 3) break;
        out += margin + std::string(comment.substr(0, cut)) + "\n";
        comment = rest = "// " + std::string(comment.substr(cut + 1));
    }
    out += margin + std::string(comment) + "\n";
}

/// Where the arguments within the parenthesis at `open` end: after each comma, and at its end.
std::vector<size_t> argumentEnds(const std::string& code, size_t open) {
    std::vector<size_t> ends;
    int depth = 0;
    for (size_t at = open; at < code.size(); at = findCode(code, at + 1, "(){}[]<>,")) {
        if (depth == 1 && code[at] == ',') ends.push_back(at + 1);
        if (std::string_view("({[<").find(code[at]) != std::string_view::npos) ++depth;
        if (std::string_view(")}]>").find(code[at]) != std::string_view::npos) --depth;
        if (depth == 0) break;
    }
    ends.push_back(code.size());
    return ends;
}

/// The arguments after `open`, as many on a line as fit. False if one of them does not fit.
bool wrapArguments(const std::string& code, size_t open, size_t margin, std::string& out) {
    std::string line = code.substr(0, open + 1);
    if (margin != open + 1) {
        out += line + "\n";
        line = std::string(margin, ' ');
    }
    size_t start = open + 1;
    bool fits = true;
    for (const size_t end : argumentEnds(code, open)) {
        const std::string argument = code.substr(start, end - start);
        if (line.size() + argument.size() > kColumns && start != open + 1) {
            out += line + "\n";
            line = std::string(margin, ' ') + argument.substr(1);
        } else {
            line += argument;
        }
        fits = fits && line.size() <= kColumns;
        start = end;
    }
    out += line + "\n";
    return fits;
}

void addCode(std::string& out, const std::string& code);

/// Adds a line in two: up to `cut`, and the rest, without its blank, on a margin of its own.
void addBroken(std::string& out, const std::string& code, size_t cut, size_t margin) {
    out += code.substr(0, cut) + "\n";
    addCode(out, std::string(margin, ' ') + code.substr(code[cut] == ' ' ? cut + 1 : cut));
}

/// Adds a call: broken after an assignment, between arguments, or before the first of them.
void addCall(std::string& out, const std::string& code, size_t open, size_t margin) {
    const size_t assigned = code.substr(0, open).find(" = ");
    const size_t rest = code.size() - std::min(assigned, code.size()) - 3 + margin + kIndent;
    if (assigned != std::string::npos && (rest <= kColumns || open >= kColumns))
        return addBroken(out, code, assigned + 2, margin + kIndent);
    std::string wrapped;
    if (wrapArguments(code, open, open + 1, wrapped)) {
        out += wrapped;
        return;
    }
    const size_t returned = code.substr(0, open).rfind(' ');
    if (open >= kColumns && returned != std::string::npos && returned > margin)
        return addBroken(out, code, returned, margin);
    wrapArguments(code, open, margin + kIndent, out);
}

/// Adds a call whose last argument is a function "[...](...) { return ...; }".
void addLambdaCall(std::string& out, const std::string& code, size_t open, size_t margin) {
    std::string wrapped;
    if (wrapArguments(code, open, open + 1, wrapped)) {
        out += wrapped;
        return;
    }
    if (margin + kIndent + code.size() - (open + 1) <= kColumns)
        return addBroken(out, code, open + 1, margin + kIndent);
    const size_t start = code.find(") { return ") + 4;
    const size_t end = code.rfind(" }");
    out += code.substr(0, start - 1) + "\n";
    addCode(out, std::string(margin + kIndent, ' ') + code.substr(start, end - start));
    out += std::string(margin, ' ') + code.substr(end + 1) + "\n";
}

/// Adds a line of code, in several lines if it is too long.
void addCode(std::string& out, const std::string& code) {
    if (code.size() <= kColumns) {
        out += code + "\n";
        return;
    }
    const size_t margin = code.find_first_not_of(' ');
    const std::string_view text = std::string_view(code).substr(margin);
    const size_t open = findCode(code, 0, "(");
    const size_t templateOpen = code.find('<');
    const size_t then = code.find(") return ");
    const size_t last = code.rfind(' ', kColumns);
    if (text.starts_with("case "))
        addBroken(out, code, code.find("::") + 2, margin + kIndent);
    else if (text.starts_with("if (") && then != std::string::npos)
        addBroken(out, code, then + 1, margin + kIndent);
    else if (code.find(") { return ") != std::string::npos)
        addLambdaCall(out, code, open, margin);
    else if (open != std::string::npos)
        addCall(out, code, open, margin);
    else if (text.find(' ') != std::string::npos && text.find(' ') + margin > templateOpen)
        addCall(out, code, templateOpen, margin);  // asnDecodeAny<T, DecodeT>
    else if (last != std::string::npos && last > margin)
        addBroken(out, code, last, margin + kIndent);
    else
        out += code + "\n";
}

/// Adds lines that all have a comment after them.
void addCommented(std::string& out, const std::vector<Line>& lines) {
    size_t column = 0;
    for (const Line& line : lines) column = std::max(column, line.code.size() + 2);
    for (const Line& line : lines) {
        std::string code = line.code;
        code.resize(column, ' ');
        out += code + line.comment + "\n";
    }
}

}  // namespace

std::string layOut(std::string_view source) {
    std::string out;
    std::vector<Line> commented;
    while (!source.empty()) {
        const size_t end = std::min(source.find('\n'), source.size());
        const Line line = split(source.substr(0, end));
        source.remove_prefix(std::min(end + 1, source.size()));
        const std::string margin = line.code.substr(0, line.code.find_first_not_of(' '));
        if (!line.comment.empty() && !isBlank(line.code) &&
            line.code.size() + line.comment.size() + 2 <= kColumns) {
            commented.push_back(line);
            continue;
        }
        addCommented(out, commented);
        commented.clear();
        if (!line.comment.empty()) addComment(out, margin, line.comment);
        if (line.comment.empty() || !isBlank(line.code)) addCode(out, line.code);
    }
    addCommented(out, commented);
    return out;
}
