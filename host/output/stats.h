// --stats: counts of messages by type, of refused messages and rejects by reason, and of calls by
// state; response times of RAS.
#pragma once

#include <map>
#include <string>

#include "histogram.h"
#include "recent.h"
#include "view.h"
#include "writer.h"

class Stats : public View {
  public:
    explicit Stats(Writer& writer) : writer_(writer), requests_(kMaxRequests) {}

    // View
    void message(const CapturedMessage& message, const MessageDetails& details,
                 const CallRecord* call) override;
    void forgotten(const CallRecord& call, const CallBook& book) override;
    void end(const CallBook& book) override;
    bool needsCalls() const override { return true; }

  private:
    static constexpr size_t kMaxRequests = 65536;

    using Counts = std::map<std::string, size_t>;

    /// The answers to the requests of one name.
    struct Answers {
        size_t requests = 0;
        size_t again = 0;  // retransmissions before the answer
        Histogram times;   // microseconds
    };
    /// A RAS request that waits for its answer.
    struct Request {
        Time time = 0;
        Answers* answers = nullptr;  // of the request's name; null after the answer
    };

    static void count(Counts& counts, std::string what);
    void ras(const CapturedMessage& message, const MessageDetails& details);
    void writeCounts(std::string_view title, const Counts& counts);
    void count(const CallRecord& call);
    void writeAnswers();

    Writer& writer_;
    Counts messages_;
    Counts refusals_;
    Counts rejects_;
    Counts calls_;
    Recent<std::pair<Endpoint, int64_t>, Request> requests_;  // by sender and number
    std::map<std::string, Answers, std::less<>> answers_;     // by name
};
