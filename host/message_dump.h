// What the host programs share: a message in, its dump as text out, through Tamsel.h alone.
#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Tamsel.h"

using Octets = std::vector<unsigned char>;

/// The largest message that the library takes.
constexpr size_t kMaxMessageOctets = 65535;

/// One message family and the function that dumps it.
struct Family {
    std::string_view name;   // as on the command line
    std::string_view title;  // for people
    int(TAMSEL_CALL* dump)(const unsigned char*, unsigned short, int, const char*);
};
extern const Family kRas;
extern const Family kUi;
extern const Family kH245;

/// The family of that name, or null.
const Family* findFamily(std::string_view name);

/// The program's standard output as it was when this was made. The library redirects the stream
/// `stdout` on each call, and on Windows leaves it on the console: so hosts print through this.
FILE* keepStandardOutput();

/// Dumps messages into memory: the library writes into a pipe, or on Windows into a temporary file,
/// which goes with the object.
class MessageDumper {
  public:
    MessageDumper();
    ~MessageDumper();
    MessageDumper(const MessageDumper&) = delete;
    MessageDumper& operator=(const MessageDumper&) = delete;

    /// The dump of one message, or nothing if it does not decode or is over kMaxMessageOctets.
    /// Valid until the next.
    std::optional<std::string_view> dump(const Family& family,
                                         std::span<const unsigned char> message, bool aligned);

  private:
    void take();

    std::string path_;
    int reading_ = -1;
    int writing_ = -1;
    std::vector<char> text_;
    size_t size_ = 0;  // of the dump in text_

    // Empties a pipe that gets full while the library writes.
    std::mutex mutex_;  // guards all but path_
    bool isWriting_ = false;
    std::jthread relief_;
};
