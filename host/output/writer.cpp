#include "writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string_view>

namespace {

/// Writes a whole text. Returns false if that fails.
bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

/// Creates a file in a folder. Throws std::runtime_error if it exists or cannot be created.
int create(int folder, const char* name) {
    const int file = openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) throw std::runtime_error(std::string(name) + ": cannot be written");
    return file;
}

}  // namespace

Writer::Writer(const std::filesystem::path& folder, size_t batch) : limit_(batch) {
    if (!folder.empty()) {
        folder_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder_ < 0) throw std::runtime_error(folder.string() + ": cannot be opened");
        index_ = create(folder_, "index.tsv");
    }
    thread_ = std::thread([this] { run(); });
}

Writer::~Writer() {
    if (thread_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            isEnding_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    if (index_ >= 0) close(index_);
    if (folder_ >= 0) close(folder_);
}

void Writer::add(std::string file) {
    auto& pieces = filling_.pieces;
    const bool isSame = file.empty() && !pieces.empty() && pieces.back().file.empty();
    if (isSame)
        pieces.back().end = filling_.text.size();
    else
        pieces.push_back({std::move(file), filling_.text.size()});
    if (filling_.text.size() >= limit_) handOver();
}

void Writer::handOver() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_ || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    waiting_.emplace(std::move(filling_));
    filling_ = std::move(spare_);
    spare_ = {};
    lock.unlock();
    changed_.notify_all();
    filling_.text.clear();
    filling_.pieces.clear();
    filling_.index.clear();
}

void Writer::finish() {
    handOver();
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
    if (failure_) std::rethrow_exception(failure_);
}

/// The thread: writes batches until the last one, or until a failure.
void Writer::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return waiting_ || isEnding_; });
        if (!waiting_) return;
        Batch batch = std::move(*waiting_);
        waiting_.reset();
        lock.unlock();
        changed_.notify_all();
        try {
            write(batch);
            lock.lock();
        } catch (...) {
            lock.lock();
            failure_ = std::current_exception();
            changed_.notify_all();
            return;
        }
        spare_ = std::move(batch);
    }
}

void Writer::write(const Batch& batch) const {
    const std::string_view all = batch.text;
    size_t at = 0;
    for (const Piece& piece : batch.pieces) {
        const std::string_view text = all.substr(at, piece.end - at);
        at = piece.end;
        if (piece.file.empty()) {
            if (!writeAll(STDOUT_FILENO, text))
                throw std::runtime_error("standard output: writing failed");
            continue;
        }
        writeFile(piece.file, text);
    }
    if (!batch.index.empty() && !writeAll(index_, batch.index))
        throw std::runtime_error("index.tsv: writing failed");
}

void Writer::writeFile(const std::string& name, std::string_view text) const {
    const int file = create(folder_, name.c_str());
    const bool isWritten = writeAll(file, text);
    if (close(file) != 0 || !isWritten) throw std::runtime_error(name + ": writing failed");
}
