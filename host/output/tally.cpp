#include "tally.h"

#include "text_format.h"

namespace {

std::string describe(Remark what, size_t octets) {
    switch (what) {
        case Remark::kOctetsMissing:
            return counted(octets, "octet") + " missing in the capture";
        case Remark::kOctetsPassedOver:
            return counted(octets, "octet") + " passed over: no whole TPKT";
        case Remark::kOctetsAfter:
            return counted(octets, "octet") + " after a message, and no message";
        default:
            return "began before the capture";
    }
}

}  // namespace

std::string describe(const CaptureRemark& remark) {
    return describe(remark.what, remark.octets);
}

void Tally::message(const CapturedMessage& message, const MessageDetails& /*details*/,
                    const CallRecord* /*call*/) {
    ++shown_.at(static_cast<size_t>(message.family));
    proposals_ += message.transport == Transport::kFastStart;
    refused_ += message.outcome == Outcome::kRefused;
    bare_ += message.outcome == Outcome::kBare;
}

void Tally::remark(const CaptureRemark& remark, const CallRecord* /*call*/) {
    Remarks& sum = remarks_.at(static_cast<size_t>(remark.what));
    ++sum.count;
    sum.octets += remark.octets;
}

std::string Tally::summary() const {
    std::string text = counted(messages(), "message") + ": " + std::to_string(shown_[0]) +
                       " ras, " + std::to_string(shown_[1]) + " ui, " + std::to_string(shown_[2]) +
                       " h245";
    if (proposals_ > 0) text += " (" + std::to_string(proposals_) + " in fastStart)";
    text += "; " + std::to_string(refused_) + " refused";
    if (bare_ > 0) text += "; " + std::to_string(bare_) + " without a user-user element";
    text += "\n";
    for (size_t i = 0; i < kRemarks; ++i) {
        const Remarks& sum = remarks_.at(i);
        if (sum.count == 0) continue;
        if (sum.octets == 0) text += counted(sum.count, "time") + ": ";
        text += describe(static_cast<Remark>(i), sum.octets) + "\n";
    }
    return text;
}
