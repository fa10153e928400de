// Writes text to standard output and to files, in a thread of its own.
#pragma once

#include <condition_variable>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// Text is appended in pieces, which are passed to the thread in batches. There are at most three
/// batches: one is filled, one waits, one is written. If one waits already, the caller waits too.
class Writer {
  public:
    /// Throws std::runtime_error if the index cannot be created.
    ///   folder  the folder of files and index.tsv, which must not exist; empty for none
    ///   batch   the octets that are passed on together; 0 passes on each piece by itself
    Writer(const std::filesystem::path& folder, size_t batch);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// The text to which the next piece is appended.
    std::string& text() { return filling_.text; }

    /// Ends a piece: it goes to standard output, or to a new file of that name. If something cannot
    /// be written, this call or a later one throws std::runtime_error.
    void toOutput() { add({}); }
    void toFile(std::string name) { add(std::move(name)); }

    /// Lines for index.tsv. They are passed on with the next piece.
    std::string& index() { return filling_.index; }

    /// Waits until everything is written. Must be called last. Throws std::runtime_error.
    void finish();

  private:
    struct Piece {
        std::string file;  // empty for standard output
        size_t end = 0;    // its end in the text of the batch
    };
    struct Batch {
        std::string text;
        std::vector<Piece> pieces;
        std::string index;
    };

    void add(std::string file);
    void handOver();
    void run();
    void write(const Batch& batch) const;
    void writeFile(const std::string& name, std::string_view text) const;

    const size_t limit_;
    int folder_ = -1;  // file descriptors; -1 for none
    int index_ = -1;
    Batch filling_;

    std::mutex mutex_;  // guards the members below, except thread_
    std::condition_variable changed_;
    std::optional<Batch> waiting_;
    Batch spare_;  // a written batch, whose memory is used again
    bool isEnding_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};
