// The exports' contract: arguments, files, and the host's standard output.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>

#if !defined(_WIN32)
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
            // Only where all that is missing are flags that count as 0.
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

TEST(Exports, TextOfTheHostComesOutRight) {
    const TemporaryFile aligned;
    const TemporaryFile unaligned;
    std::vector<Message> messages = allMessages();
    const auto other =
        std::find_if(messages.begin(), messages.end(), [](const Message& m) { return !m.aligned; });
    const std::string text = printedBy([&] {
        std::printf("before\n");
        int done = runExport(sample(), sample().octets, aligned.path());
        std::printf("between\n");
        done += runExport(*other, other->octets, unaligned.path());
        std::printf("after %d\n", done);
    });
    EXPECT_EQ(text, "before\nbetween\nafter 2\n");
    EXPECT_EQ(readFile(aligned.path()), sample().expected);
    EXPECT_EQ(readFile(unaligned.path()), other->expected);
}

TEST(Exports, FilesThatCannotBeOpened) {
    for (const char* path : {"", "/", "/nonexistent/dump.txt"}) {
        SCOPED_TRACE(path);
        const TemporaryFile file;
        const std::string text = printedBy([&] {
            std::printf("before\n");
            std::fflush(stdout);
            if (runExport(sample(), sample().octets, path) != 0) _exit(1);
            // Standard output is closed now, and a later call works all the same.
            if (fileno(stdout) >= 0) _exit(2);
            if (runExport(sample(), sample().octets, file.path()) != 1) _exit(3);
            std::printf("nowhere\n");
        });
        EXPECT_EQ(text, "before\n");
        EXPECT_EQ(readFile(file.path()), sample().expected);
    }
}

TEST(Exports, StandardOutputMayBeClosed) {
    const TemporaryFile file;
    printedBy([&] {
        std::fclose(stdout);
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(2);
    });
    EXPECT_EQ(readFile(file.path()), sample().expected);
    printedBy([&] {
        close(1);
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
    });
    EXPECT_EQ(readFile(file.path()), sample().expected);
}

TEST(Exports, AFullDiskIsNotTheHostsTrouble) {
    const std::string text = printedBy([&] {
        if (runExport(sample(), sample().octets, "/dev/full") != 1) _exit(1);
        std::printf("after\n");
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) _exit(2);
    });
    EXPECT_EQ(text, "after\n") << "the dump that the disk did not take must not come out here";
}

TEST(Exports, BufferingStaysAsTheHostHadIt) {
    const TemporaryFile file;
    const std::string text = printedBy([&] {
        std::setvbuf(stdout, nullptr, _IONBF, 0);
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
        std::printf("unbuffered");
        _exit(0);  // without a flush
    });
    EXPECT_EQ(text, "unbuffered");
    const std::string lines = printedBy([&] {
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
        std::printf("x");
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
        std::printf("a line\nlost");
        _exit(0);
    });
    EXPECT_EQ(lines, "xa line\n");
}

TEST(Exports, StandardOutputMayBeWide) {
    const TemporaryFile file;
    printedBy([&] {
        std::fwide(stdout, 1);
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
    });
    EXPECT_EQ(readFile(file.path()), sample().expected);
}

TEST(Exports, CallsLeaveNothingBehind) {
    const auto descriptors = [] {
        const std::filesystem::directory_iterator open("/proc/self/fd");
        return std::distance(begin(open), end(open));
    };
    const TemporaryFile file;
    printedBy([&] {
        if (runExport(sample(), sample().octets, file.path()) != 1) _exit(1);
        const auto before = descriptors();
        const int64_t blocks = allocation.unreleased;
        for (int i = 0; i < 50; ++i) {
            if (runExport(sample(), sample().octets, file.path()) != 1) _exit(2);
            if (runExport(sample(), {0xFF}, file.path()) != 0) _exit(3);
        }
        if (descriptors() != before) _exit(4);
        if (allocation.unreleased != blocks) _exit(5);
        if (runExport(sample(), sample().octets, "/") != 0) _exit(6);
        if (descriptors() != before - 1) _exit(7);  // standard output was closed
    });
    EXPECT_EQ(readFile(file.path()), sample().expected);
}

#endif

}  // namespace
