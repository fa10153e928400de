// Pasted text, from tests/dump/forms.txt: "@ why", the text, and "= messages" or "! error".
#include "hex_text.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

struct Form {
    std::string why;
    std::string text;
    std::string expected;
};

std::vector<Form> forms() {
    std::vector<Form> all;
    std::ifstream in(TAMSEL_TEST_DUMP "/forms.txt", std::ios::binary);
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("@ ")) {
            all.push_back({line, {}, {}});
        } else if (line.starts_with("= ")) {
            std::erase(line, ' ');
            all.back().expected = line.substr(1);
        } else if (line.starts_with("! ")) {
            all.back().expected = line.substr(2);
        } else {
            all.back().text += line + "\n";
        }
    }
    return all;
}

std::string parsed(const std::string& text) {
    EXPECT_TRUE(isText(text));
    try {
        std::string found;
        for (const PastedMessage& message : parseMessages(text, false))
            found += (found.empty() ? "" : "|") + formatHex(message.octets);
        return found;
    } catch (const BadHex& bad) {
        return bad.what();
    }
}

}  // namespace

// As it is, as a Windows editor stores it, and without the last line end.
TEST(HexText, PastedForms) {
    const std::vector<Form> all = forms();
    EXPECT_GT(all.size(), 30U);
    for (const Form& form : all) {
        SCOPED_TRACE(form.why);
        std::string windows = "\xEF\xBB\xBF";
        for (const char c : form.text) windows += c == '\n' ? "\r\n" : std::string(1, c);
        EXPECT_EQ(parsed(form.text), form.expected);
        EXPECT_EQ(parsed(windows), form.expected);
        EXPECT_EQ(parsed(form.text.substr(0, form.text.size() - 1)), form.expected);
    }
}

TEST(HexText, JoinedLinesAreOneMessage) {
    EXPECT_EQ(formatHex(parseHex("0102\n03\n\n04 05\n")), "0102030405");
    EXPECT_TRUE(parseHex("\n").empty());
}

TEST(HexText, TellsTheLineOfEachMessage) {
    const std::vector<PastedMessage> found = parseMessages("\n01\n\n02,\n03\n04\n", false);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].line, 2U);
    EXPECT_EQ(found[1].line, 4U);
    EXPECT_EQ(found[2].line, 6U);
}
