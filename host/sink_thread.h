// Writing beside finding: a sink of its own thread.
#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>
#include <vector>

#include "call_follower.h"

/// Passes copies of all that it is told to another sink, in order, in a thread of its own. Holds at
/// most two batches of them: who finds faster than the sink writes has to wait.
class SinkThread : public MessageSink {
  public:
    /// batch: so many octets of messages and dumps are passed on together; 0 for each by itself.
    SinkThread(MessageSink& to, size_t batch);
    ~SinkThread() override;
    SinkThread(const SinkThread&) = delete;
    SinkThread& operator=(const SinkThread&) = delete;

    // MessageSink. What the other sink throws is thrown here, by one of the next calls.
    void message(const CapturedMessage& message) override;
    void remark(const CaptureRemark& remark) override;

    /// Passes on what is left, and waits until the other sink has it all. To be called last.
    void finish();

    /// How many messages came.
    size_t messages() const { return messages_; }

  private:
    /// A message with all that its views are of.
    struct Stored {
        CapturedMessage message;
        std::vector<uint8_t> octets;
        std::optional<std::string> dump;
        std::string name;
        std::string call;
    };
    using Batch = std::vector<std::variant<Stored, CaptureRemark>>;

    void add(std::variant<Stored, CaptureRemark> item, size_t octets);
    void handOver();
    void run();
    void deliver(const Batch& batch);

    MessageSink& to_;
    const size_t limit_;
    Batch filling_;
    size_t octets_ = 0;  // in filling_
    size_t messages_ = 0;

    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    std::optional<Batch> waiting_;
    bool isEnding_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};
