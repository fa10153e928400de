#include "presenter.h"

#include <algorithm>

Presenter::Presenter(PresenterOptions options, std::vector<View*> views)
    : options_(std::move(options)), selection_(options_.selection), views_(std::move(views)) {
    const auto wanted = [&](bool (View::*needs)() const) {
        return std::any_of(views_.begin(), views_.end(),
                           [&](const View* view) { return (view->*needs)(); });
    };
    needsCalls_ = options_.callNumber > 0 || wanted(&View::needsCalls);
    needsDetails_ = needsCalls_ || wanted(&View::needsDetails);
    book_.onForgotten([this](const CallRecord& call) {
        if (!call.isShown) return;
        for (View* const view : views_) view->forgotten(call, book_);
    });
}

void Presenter::message(const CapturedMessage& message) {
    if (needsDetails_) readDetails(*options_.modules, message, details_);
    CallRecord* call = nullptr;
    EndpointRecord* endpoint = nullptr;
    if (needsCalls_ && message.call.isEmpty())
        endpoint = book_.noteOutsideCalls(message, details_);
    else if (needsCalls_)
        call = book_.note(message, details_);
    if (!selection_.has(message) || !isShown(call)) return;
    if (call != nullptr) call->isShown = true;
    if (endpoint != nullptr) endpoint->isShown = true;
    for (View* const view : views_) view->message(message, details_, call);
}

void Presenter::remark(const CaptureRemark& remark) {
    const CallRecord* const call = needsCalls_ ? book_.note(remark) : nullptr;
    if (!selection_.has(remark) || !isShown(call)) return;
    for (View* const view : views_) view->remark(remark, call);
}

void Presenter::end() {
    for (View* const view : views_) view->end(book_);
}
