// What the tests share: octets in blocks of exactly their size, and captured output.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "asn1per/asn1per.h"

using Octets = std::vector<uint8_t>;

/// Octets from hex text; blanks are skipped.
inline Octets hex(const std::string& text) {
    Octets octets;
    std::string digits;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0) continue;
        digits += c;
        if (digits.size() < 2) continue;
        octets.push_back(static_cast<uint8_t>(std::stoul(digits, nullptr, 16)));
        digits.clear();
    }
    return octets;
}

/// Octets from bits as text, filled up with zeroes; blanks are skipped, and [text] gives
/// octets in hex.
inline Octets bits(const std::string& text) {
    Octets octets;
    size_t used = 0;
    const auto put = [&](bool bit) {
        if (used % 8 == 0) octets.push_back(0);
        if (bit) octets.back() = static_cast<uint8_t>(octets.back() | 0x80 >> used % 8);
        ++used;
    };
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '0' || text[i] == '1') put(text[i] == '1');
        if (text[i] != '[') continue;
        const size_t close = text.find(']', i);
        for (const uint8_t octet : hex(text.substr(i, close - i)))
            for (int bit = 7; bit >= 0; --bit) put((octet >> bit & 1) != 0);
        i = close;
    }
    return octets;
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
#if defined(_WIN32)  // text mode would end at a 0x1A in a character string
    size_t kept = 0;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') text[kept++] = text[i];
    text.resize(kept);
#endif
    return text;
}

/// A file in the temporary folder, removed with the object.
class TemporaryFile {
  public:
    TemporaryFile() {
        static int count = 0;
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("tamsel-") + test->test_suite_name() + "-" + test->name() +
                           "-" + std::to_string(count++);
        for (char& c : name)
            if (c == '/') c = '-';
        path_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove(path_);
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    std::string path() const { return path_.string(); }
    bool exists() const { return std::filesystem::exists(path_); }

  private:
    std::filesystem::path path_;
};

/// A context over a copy of the octets in a block of exactly their size, so that a sanitizer
/// detects a read of one octet too many. No octets at all are bound as those of an empty open type.
class Decoding {
  public:
    explicit Decoding(const Octets& octets, bool aligned = true)
        : octets_(new uint8_t[octets.size()]) {
        std::copy(octets.begin(), octets.end(), octets_.get());
        const uint8_t dummy = 0;
        EXPECT_EQ(asnInitContext(ctx, &dummy, 1), kAsnOk);
        asnBindOctets(ctx, octets_.get(), static_cast<uint32_t>(octets.size()));
        ctx.aligned = aligned ? 1 : 0;
    }
    ~Decoding() { asnFreeContext(ctx); }
    Decoding(const Decoding&) = delete;
    Decoding& operator=(const Decoding&) = delete;

    /// Moves the cursor to a bit, in the form with bitOffset 8 .. 1.
    Decoding& at(int64_t bit) {
        pd_SetBitOffset(ctx, bit);
        return *this;
    }

    AsnContext ctx;

  private:
    std::unique_ptr<uint8_t[]> octets_;
};

/// A status and the trail of the failure: run-time sources, or module and line.
inline std::string failureOf(const AsnContext& ctx, AsnStatus status) {
    constexpr const char* kSources[] = {"?",    "bits",      "numbers",    "strings",  "objid",
                                        "real", "opentypes", "constructs", "integers", "published"};
    std::string text = std::to_string(status);
    for (int32_t i = 0; i < ctx.errInfo.trailCount; ++i) {
        const AsnTrailEntry& site = ctx.errInfo.trail[i];
        const std::string module = site.module;
        text += module == kAsnRuntime ? std::string(" ") + kSources[site.line / 1000]
                                      : " " + module + ":" + std::to_string(site.line);
    }
    return text;
}

/// What a printer adds to a dump.
template <class Print>
std::string dumped(Print print, const char* root = "P") {
    std::string text;
    const auto append = [](void* to, const char* piece, size_t size) {
        static_cast<std::string*>(to)->append(piece, size);
    };
    {
        AsnDump dump(AsnDumpSink{append, &text}, root);
        print(dump);
    }
    return text;
}
