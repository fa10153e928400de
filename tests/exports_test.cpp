// The contract of the exports: arguments, files, and what they do not touch.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "allocation.h"
#include "messages.h"

namespace {

const Message& sample() {
    static const Message message = [] {
        for (const Message& candidate : allMessages())
            if (candidate.name == "h245-terminalCapabilitySet") return candidate;
        return Message{};
    }();
    return message;
}

TEST(Exports, RefuseWithoutTouchingTheFile) {
    const TemporaryFile file;
    const uint8_t octet = 0;
    for (const auto& dump : {H323RASASNDecode, H323UserInfoASNDecode, H323H245ASNDecode}) {
        EXPECT_EQ(dump(nullptr, 1, 1, file.path().c_str()), 0);
        EXPECT_EQ(dump(&octet, 0, 1, file.path().c_str()), 0);
        EXPECT_EQ(dump(&octet, 1, 1, nullptr), 0);
        EXPECT_FALSE(file.exists());
    }
}

TEST(Exports, CutMessagesLeaveAnExistingFileAlone) {
    for (const Message& message : allMessages()) {
        const TemporaryFile file;
        std::ofstream(file.path()) << "as it was\n";
        for (size_t cut = 0; cut < message.octets.size(); ++cut) {
            Octets shorter(message.octets.begin(),
                           message.octets.begin() + static_cast<ptrdiff_t>(cut));
            if (runExport(message, shorter, file.path()) == 0) {
                ASSERT_EQ(readFile(file.path()), "as it was\n") << message.name << ", " << cut;
                continue;
            }
            // It decodes only if nothing but flags is missing, which count as 0.
            EXPECT_LE(readFile(file.path()).size(), message.expected.size()) << message.name;
            std::ofstream(file.path()) << "as it was\n";
        }
    }
}

TEST(Exports, AnyNonZeroIsAligned) {
    const TemporaryFile file;
    const Message& message = sample();
    EXPECT_EQ(
        message.dump(message.octets.data(), static_cast<unsigned short>(message.octets.size()),
                     0x100, file.path().c_str()),
        1);
    EXPECT_EQ(readFile(file.path()), message.expected);
}

#if !defined(_WIN32)

/// Runs a host in a process of its own, with a pipe as standard output, and returns what it
/// printed.
template <class Host>
std::string printedBy(Host host) {
    int ends[2] = {};
    EXPECT_EQ(pipe(ends), 0);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        host();
        std::fflush(stdout);
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char part[4096];
    for (ssize_t got = 0; (got = read(ends[0], part, sizeof part)) > 0;)
        text.append(part, static_cast<size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return text;
}

TEST(Exports, StandardOutputIsNotTouched) {
    const TemporaryFile file;
    const auto both = [&] {  // one call that opens its file, one that cannot
        return runExport(sample(), sample().octets, file.path()) == 1 &&
               runExport(sample(), sample().octets, "/nonexistent/dump.txt") == 0;
    };
    EXPECT_EQ(printedBy([&] {
                  std::printf("before\nin the buffer, ");
                  if (!both()) _exit(1);
                  std::printf("after\n");
              }),
              "before\nin the buffer, after\n");
    EXPECT_EQ(readFile(file.path()), sample().expected);
    printedBy([&] {
        close(1);
        if (!both() || fcntl(1, F_GETFD) >= 0) _exit(1);
    });
    EXPECT_EQ(readFile(file.path()), sample().expected);
}

TEST(Exports, AFullDiskIsNotDetected) {
    EXPECT_EQ(runExport(sample(), sample().octets, "/dev/full"), 1);
}

TEST(Exports, CallsLeaveNothingBehind) {
    const auto descriptors = [] {
        const std::filesystem::directory_iterator open("/proc/self/fd");
        return std::distance(begin(open), end(open));
    };
    const TemporaryFile file;
    const auto before = descriptors();
    const int64_t blocks = allocation.unreleased;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(runExport(sample(), sample().octets, file.path()), 1);
        EXPECT_EQ(runExport(sample(), {0xFF}, file.path()), 0);
        EXPECT_EQ(runExport(sample(), sample().octets, "/"), 0);
    }
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(allocation.unreleased, blocks);
}

TEST(Exports, NeedOneDescriptor) {
    (void)sample();  // its files are read before there are too few descriptors
    for (const int available : {0, 1}) {
        const TemporaryFile file;
        std::ofstream(file.path()) << "as it was\n";
        printedBy([&] {
            const int lowestFree = dup(0);
            rlimit limit{};
            getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = static_cast<rlim_t>(lowestFree + available);
            setrlimit(RLIMIT_NOFILE, &limit);
            close(lowestFree);
            if (runExport(sample(), sample().octets, file.path()) != available) _exit(1);
        });
        EXPECT_EQ(readFile(file.path()), available == 1 ? sample().expected : "as it was\n");
    }
}

#endif

}  // namespace
