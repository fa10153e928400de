// Decoders and, on Linux, exports in many threads at once: every dump is correct. The environment
// variable TAMSEL_THREADS_SECONDS says how long each test runs.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "TamselCore.h"
#include "messages.h"

namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point endOfRun() {
    const char* const seconds = std::getenv("TAMSEL_THREADS_SECONDS");
    return Clock::now() +
           std::chrono::milliseconds(seconds != nullptr ? std::atoi(seconds) * 1000 : 300);
}

/// Runs `check(thread, message)` in 16 threads, each with all messages in an order of its own, and
/// returns how many dumps were wrong.
template <class Check>
int wrongDumps(Check check) {
    const std::vector<Message> messages = allMessages();
    const Clock::time_point end = endOfRun();
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> threads;
    for (size_t thread = 0; thread < 16; ++thread)
        threads.emplace_back([&, thread, run = check(thread)]() mutable {
            for (size_t i = thread; Clock::now() < end; ++i)
                wrong += run(messages[i * (thread + 1) % messages.size()]) ? 0 : 1;
        });
    threads.clear();
    return wrong;
}

TEST(Threads, DecodersAreIndependent) {
    EXPECT_EQ(wrongDumps([](size_t /*thread*/) {
                  return [decoder = std::make_shared<TamselDecoder>()](const Message& message) {
                      std::string_view text;
                      return decoder->decode(familyOf(message), message.octets, message.aligned) ==
                                 kAsnOk &&
                             decoder->dump(&text) == kAsnOk && text == message.expected;
                  };
              }),
              0);
}

#if !defined(_WIN32)
TEST(Threads, ExportsMayRunAtTheSameTime) {
    EXPECT_EQ(wrongDumps([](size_t thread) {
                  return [file = std::make_shared<TemporaryFile>(),
                          cut = thread % 2 == 1](const Message& message) {
                      // Every other thread also has a message refused between two others.
                      if (cut) (void)runExport(message, {0xFF}, file->path());
                      return runExport(message, message.octets, file->path()) == 1 &&
                             readFile(file->path()) == message.expected;
                  };
              }),
              0);
}
#endif

}  // namespace
