// Selects the messages that are shown, and passes them to the views.
#pragma once

#include <vector>

#include "call_book.h"
#include "selection.h"
#include "view.h"

struct PresenterOptions {
    const TamselModules* modules = &kTamsel2009;
    SelectionOptions selection = {};
    size_t callNumber = 0;  // the only call to show, by its number in the list; 0 for all
};

class Presenter : public MessageSink {
  public:
    /// views: must outlive the presenter.
    Presenter(PresenterOptions options, std::vector<View*> views);

    // MessageSink
    void message(const CapturedMessage& message) override;
    void remark(const CaptureRemark& remark) override;

    /// Must be called when all captures have been read.
    void end();

    const CallBook& book() const { return book_; }

  private:
    bool isShown(const CallRecord* call) const {
        return options_.callNumber == 0 || (call != nullptr && call->number == options_.callNumber);
    }

    PresenterOptions options_;
    Selection selection_;
    std::vector<View*> views_;
    bool needsDetails_ = false;
    bool needsCalls_ = false;
    CallBook book_;
    MessageDetails details_;
};
