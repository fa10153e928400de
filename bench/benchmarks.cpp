// How fast the library is, and its parts. All figures that are compared come from one run.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "Tamsel.h"
#include "TamselCore.h"
#include "made_messages.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kDumpFile = "/dev/shm/tamsel-bench.txt";  // a memory file system

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A family, and the export that dumps its messages.
struct Family {
    const TamselFamily& core;
    int (*dump)(const unsigned char*, unsigned short, int, const char*);
};
const Family kRas{kTamsel1998.ras, H323RASASNDecode};
const Family kUi{kTamsel1998.ui, H323UserInfoASNDecode};
const Family kH245{kTamsel1998.h245, H323H245ASNDecode};

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
        std::fprintf(stderr, "bench: a %s message does not decode\n", family.core.name);
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
            if (name.rfind(std::string(family->core.name) + "-", 0) != 0) continue;
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

/// Those of the messages that decode with other modules, as messages of these.
std::vector<Message> withModules(const TamselModules& modules,
                                 const std::vector<Message>& messages) {
    static const Family families[] = {
        {modules.ras, nullptr}, {modules.ui, nullptr}, {modules.h245, nullptr}};
    const auto decoder = std::make_unique<TamselDecoder>();
    std::vector<Message> others;
    for (const Message& message : messages)
        for (const Family& family : families) {
            if (std::string_view(family.core.name) != message.family->core.name) continue;
            std::string_view dump;
            if (decoder->decode(family.core, message.octets, message.aligned) != kAsnOk ||
                decoder->dump(&dump) != kAsnOk)
                std::fprintf(stderr, "bench: a %s message does not decode\n", family.core.name);
            others.push_back({&family, message.octets, message.aligned, std::string(dump)});
        }
    return others;
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

void decode(TamselDecoder& decoder, const Message& message) {
    if (decoder.decode(message.family->core, message.octets, message.aligned) != kAsnOk)
        std::abort();
}

/// A sink that discards the text.
void discard(void* /*target*/, const char* text, size_t size) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(size);
}

/// `best ns/line` is that of the fastest of many short batches, which other load on the machine
/// disturbs less often than a whole run.
void decodeOnly(benchmark::State& state, const std::vector<Message>& messages) {
    constexpr int kBatch = 16;
    std::chrono::duration<double, std::nano> best{1e18};
    const auto decoder = std::make_unique<TamselDecoder>();
    while (state.KeepRunningBatch(kBatch)) {
        const auto start = Clock::now();
        for (int round = 0; round < kBatch; ++round)
            for (const Message& message : messages) decode(*decoder, message);
        best = std::min<decltype(best)>(best, Clock::now() - start);
    }
    count(state, messages);
    double lines = 0;
    for (const Message& message : messages) lines += message.lines();
    state.counters["best ns/line"] = best.count() / (kBatch * lines);
}

void printOnly(benchmark::State& state, const std::vector<Message>& messages) {
    std::vector<std::unique_ptr<TamselDecoder>> decoders;
    for (const Message& message : messages)
        decode(*decoders.emplace_back(std::make_unique<TamselDecoder>()), message);
    for (auto _ : state)
        for (const auto& decoder : decoders) decoder->print({discard, nullptr});
    count(state, messages);
}

/// What a program does with each message: decode it, and have its dump in memory.
void decodeAndDump(benchmark::State& state, const std::vector<Message>& messages) {
    const auto decoder = std::make_unique<TamselDecoder>();
    for (auto _ : state)
        for (const Message& message : messages) {
            decode(*decoder, message);
            std::string_view text;
            if (decoder->dump(&text) != kAsnOk) std::abort();
            benchmark::DoNotOptimize(text);
        }
    count(state, messages);
}

void runExport(const Message& message) {
    message.family->dump(message.octets.data(), message.length(), message.aligned ? 1 : 0,
                         kDumpFile);
}

/// The least that a dump into a file can cost: open, one write, close.
void runFloor(const Message& message) {
    const int file = open(kDumpFile, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (write(file, message.dump.data(), message.dump.size()) < 0) std::abort();
    close(file);
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
    add("decode", [=](benchmark::State& state) { decodeOnly(state, messages); });
    add("print", [=](benchmark::State& state) { printOnly(state, messages); });
    add("decode-dump", [=](benchmark::State& state) { decodeAndDump(state, messages); });
    if (messages[0].family->dump == nullptr) return;
    add("export", [=](benchmark::State& state) {
        exportOverFloor(state, messages);
    })->UseManualTime();
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    registerSet("captured", captured(nullptr));
    registerSet("captured-2009", withModules(kTamsel2009, captured(nullptr)));
    for (const Family* family : {&kRas, &kUi, &kH245})
        registerSet(std::string("captured-") + family->core.name, captured(family));
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
