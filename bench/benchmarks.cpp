// How fast the library is, and its parts. All figures that are compared come from one run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "H245.h"
#include "H323.h"
#include "Tamsel.h"
#include "made_messages.h"
#include "standard_output.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kDumpFile = "/dev/shm/tamsel-bench.txt";  // a memory file system

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A family's entry points, each behind one signature.
struct Family {
    const char* name;
    const char* root;
    AsnStatus (*decode)(AsnContext&, void*);
    void (*print)(AsnDump&, const void*);
    int (*dump)(const unsigned char*, unsigned short, int, const char*);
};

template <class T, AsnStatus (*Decode)(AsnContext&, T&)>
AsnStatus decodeAs(AsnContext& ctx, void* value) {
    *static_cast<T*>(value) = {};
    return Decode(ctx, *static_cast<T*>(value));
}
template <class T, void (*Print)(AsnDump&, const T&)>
void printAs(AsnDump& dump, const void* value) {
    Print(dump, *static_cast<const T*>(value));
}

const Family kRas{"ras", "RasMessage", decodeAs<H225RasMessage, DecodeH225RasMessage>,
                  printAs<H225RasMessage, PrintH225RasMessage>, H323RASASNDecode};
const Family kUi{"ui", "H323-UserInformation",
                 decodeAs<H225H323_UserInformation, DecodeH225H323_UserInformation>,
                 printAs<H225H323_UserInformation, PrintH225H323_UserInformation>,
                 H323UserInfoASNDecode};
const Family kH245{
    "h245", "MultimediaSystemControlMessage",
    decodeAs<H245MultimediaSystemControlMessage, DecodeH245MultimediaSystemControlMessage>,
    printAs<H245MultimediaSystemControlMessage, PrintH245MultimediaSystemControlMessage>,
    H323H245ASNDecode};

struct Message {
    const Family* family;
    Octets octets;
    bool aligned;
    std::string dump;  // as the export writes it
    double lines() const { return static_cast<double>(std::count(dump.begin(), dump.end(), '\n')); }
    auto length() const { return static_cast<unsigned short>(octets.size()); }
};

Message make(const Family& family, Octets octets, bool aligned) {
    Message message{&family, std::move(octets), aligned, ""};
    if (family.dump(message.octets.data(), message.length(), aligned ? 1 : 0, kDumpFile) != 1)
        std::fprintf(stderr, "bench: a %s message does not decode\n", family.name);
    message.dump = readFile(kDumpFile);
    return message;
}

/// The captured messages: those of the data folder without a variant in their names.
std::vector<Message> captured(const Family* only) {
    std::vector<Message> messages;
    for (const auto& entry : std::filesystem::directory_iterator(TAMSEL_BENCH_DATA)) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() != ".hex" || name.find("aligned") != std::string::npos)
            continue;
        for (const Family* family : {&kRas, &kUi, &kH245}) {
            if (name.rfind(std::string(family->name) + "-", 0) != 0) continue;
            if (only != nullptr && only != family) continue;
            const std::string text = readFile(entry.path());
            Octets octets;
            for (size_t i = 0; i + 1 < text.size(); i += 2)
                octets.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
            messages.push_back(make(*family, std::move(octets), true));
        }
    }
    return messages;
}

/// Pooled counters: what all messages of one round come to.
void count(benchmark::State& state, const std::vector<Message>& messages) {
    double input = 0;
    double output = 0;
    double lines = 0;
    for (const Message& message : messages) {
        input += static_cast<double>(message.octets.size());
        output += static_cast<double>(message.dump.size());
        lines += message.lines();
    }
    const auto rounds = static_cast<double>(state.iterations());
    const auto rate = benchmark::Counter::kIsRate;
    const auto time = benchmark::Counter::kIsRate | benchmark::Counter::kInvert;
    state.counters["messages/s"] = {rounds * static_cast<double>(messages.size()), rate};
    state.counters["input MB/s"] = {rounds * input / 1e6, rate};
    state.counters["dump MB/s"] = {rounds * output / 1e6, rate};
    state.counters["ns/line"] = {rounds * lines / 1e9, time};
}

/// A message decoded, as the exports do it: context and first block in the caller's frame.
class Decoded {
  public:
    explicit Decoded(const Message& message) {
        if (asnInitContext(ctx_, message.octets.data(), message.length()) != kAsnOk) std::abort();
        ctx_.aligned = message.aligned ? 1 : 0;
        asnMemLend(ctx_.memHeap, first_);
        if (message.family->decode(ctx_, value_) != kAsnOk) std::abort();
    }
    ~Decoded() { asnFreeContext(ctx_); }
    Decoded(const Decoded&) = delete;
    Decoded& operator=(const Decoded&) = delete;

    const void* value() const { return value_; }

  private:
    AsnContext ctx_;
    AsnMemFirstBlock first_;
    alignas(16) unsigned char value_[2048];
};
static_assert(sizeof(H225RasMessage) <= 2048 && sizeof(H225H323_UserInformation) <= 2048 &&
              sizeof(H245MultimediaSystemControlMessage) <= 2048);

/// `best ns/line` is that of the fastest of many short batches, which others' work spares more
/// often than a whole run.
void decodeOnly(benchmark::State& state, const std::vector<Message>& messages) {
    constexpr int kBatch = 16;
    std::chrono::duration<double, std::nano> best{1e18};
    while (state.KeepRunningBatch(kBatch)) {
        const auto start = Clock::now();
        for (int round = 0; round < kBatch; ++round)
            for (const Message& message : messages) {
                const Decoded decoded(message);
                benchmark::DoNotOptimize(decoded.value());
            }
        best = std::min<decltype(best)>(best, Clock::now() - start);
    }
    count(state, messages);
    double lines = 0;
    for (const Message& message : messages) lines += message.lines();
    state.counters["best ns/line"] = best.count() / (kBatch * lines);
}

void printOnly(benchmark::State& state, const std::vector<Message>& messages, FILE* stream) {
    std::vector<std::unique_ptr<Decoded>> decoded;
    for (const Message& message : messages) decoded.push_back(std::make_unique<Decoded>(message));
    for (auto _ : state)
        for (size_t i = 0; i < messages.size(); ++i) {
            std::rewind(stream);
            AsnDump dump(stream, messages[i].family->root);
            messages[i].family->print(dump, decoded[i]->value());
        }
    std::fclose(stream);
    count(state, messages);
}

void runExport(const Message& message) {
    message.family->dump(message.octets.data(), message.length(), message.aligned ? 1 : 0,
                         kDumpFile);
}

/// The least that a dump onto a file can cost: standard output there and back, and one write.
void runFloor(const Message& message) {
    StandardOutput output;
    if (!output.redirect(kDumpFile)) std::abort();
    std::fwrite(message.dump.data(), 1, message.dump.size(), stdout);
    output.restore();
}

/// Export and floor in turns, so that both meet the same machine; `ratio` is what counts.
void exportOverFloor(benchmark::State& state, const std::vector<Message>& messages) {
    Clock::duration exporting{};
    Clock::duration floor{};
    for (auto _ : state) {
        const auto start = Clock::now();
        for (const Message& message : messages) runExport(message);
        const auto middle = Clock::now();
        for (const Message& message : messages) runFloor(message);
        exporting += middle - start;
        floor += Clock::now() - middle;
        state.SetIterationTime(std::chrono::duration<double>(middle - start).count());
    }
    count(state, messages);
    using Seconds = std::chrono::duration<double>;
    state.counters["ratio"] = Seconds(exporting) / Seconds(floor);
}

void registerSet(const std::string& name, const std::vector<Message>& messages) {
    const auto add = [&](const std::string& what, auto run) {
        return benchmark::RegisterBenchmark((what + "/" + name).c_str(), run);
    };
    const auto memory = [](size_t size) {
        static std::vector<char> buffer(size);
        return fmemopen(buffer.data(), buffer.size(), "w");
    };
    add("decode", [=](benchmark::State& state) { decodeOnly(state, messages); });
    add("print-memory",
        [=](benchmark::State& state) { printOnly(state, messages, memory(1 << 23)); });
    add("print-null",
        [=](benchmark::State& state) { printOnly(state, messages, std::fopen("/dev/null", "w")); });
    add("export", [=](benchmark::State& state) {
        exportOverFloor(state, messages);
    })->UseManualTime();
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    registerSet("captured", captured(nullptr));
    for (const Family* family : {&kRas, &kUi, &kH245})
        registerSet(std::string("captured-") + family->name, captured(family));
    for (const bool aligned : {true, false}) {
        const std::string variant = aligned ? "aligned/" : "unaligned/";
        for (const uint32_t size : {1, 64, 1024, 8192, 65000})
            registerSet("string-" + variant + std::to_string(size),
                        {make(kH245, stringMessage(size, aligned), aligned)});
        for (const uint32_t size : {1, 64, 1024, 8192, 16000})
            registerSet("list-" + variant + std::to_string(size),
                        {make(kUi, listMessage(size, aligned), aligned)});
    }
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove(kDumpFile);
    return 0;
}
