#include "sink_thread.h"

SinkThread::SinkThread(MessageSink& to, size_t batch)
    : to_(to), limit_(batch), thread_([this] { run(); }) {
}

SinkThread::~SinkThread() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void SinkThread::message(const CapturedMessage& message) {
    ++messages_;
    Stored stored{message, {message.octets.begin(), message.octets.end()}, {}, {}, {}};
    if (message.dump) stored.dump.emplace(*message.dump);
    stored.name = message.name;
    stored.call = message.call;
    const size_t octets = sizeof stored + stored.octets.size() + message.dump.value_or("").size();
    add(std::move(stored), octets);
}

void SinkThread::remark(const CaptureRemark& remark) {
    add(remark, sizeof remark);
}

void SinkThread::add(std::variant<Stored, CaptureRemark> item, size_t octets) {
    filling_.push_back(std::move(item));
    octets_ += octets;
    if (octets_ >= limit_) handOver();
}

void SinkThread::handOver() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_ || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    waiting_.emplace(std::move(filling_));
    filling_.clear();
    octets_ = 0;
    lock.unlock();
    changed_.notify_all();
}

void SinkThread::finish() {
    handOver();
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
    if (failure_) std::rethrow_exception(failure_);
}

/// The thread: batch by batch, until the last or the first failure.
void SinkThread::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return waiting_ || isEnding_; });
        if (!waiting_) return;
        const Batch batch = std::move(*waiting_);
        waiting_.reset();
        lock.unlock();
        changed_.notify_all();
        try {
            deliver(batch);
            lock.lock();
        } catch (...) {
            lock.lock();
            failure_ = std::current_exception();
            changed_.notify_all();
            return;
        }
    }
}

void SinkThread::deliver(const Batch& batch) {
    for (const auto& item : batch) {
        if (const auto* const remark = std::get_if<CaptureRemark>(&item)) {
            to_.remark(*remark);
            continue;
        }
        const Stored& stored = std::get<Stored>(item);
        CapturedMessage message = stored.message;
        message.octets = stored.octets;
        if (stored.dump) message.dump = *stored.dump;
        message.name = stored.name;
        message.call = stored.call;
        to_.message(message);
    }
}
