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

/// Takes text in pieces and passes them on in batches. Holds at most two batches: a caller that
/// makes text faster than it can be written has to wait.
class Writer {
  public:
    /// folder: where files and index.tsv are written, which are not there yet; empty for none.
    /// batch: how many octets are passed on together; 0 for each piece by itself.
    Writer(const std::filesystem::path& folder, size_t batch);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Where the next piece is to be appended.
    std::string& text() { return filling_.text; }

    /// What was appended is a piece for standard output, or for a new file of that name.
    /// What could not be written is thrown here, by this call or a later one.
    void toOutput() { add({}); }
    void toFile(std::string name) { add(std::move(name)); }

    /// Lines for the folder's index.tsv; they are passed on with the next piece.
    std::string& index() { return filling_.index; }

    /// Waits until all is written. To be called last.
    void finish();

  private:
    struct Piece {
        std::string file;  // empty for standard output
        size_t end = 0;    // in the text
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
    int folder_ = -1;
    int index_ = -1;
    Batch filling_;

    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    std::optional<Batch> waiting_;
    Batch spare_;  // an empty one, with its memory
    bool isEnding_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};
