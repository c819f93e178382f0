#include "manager/request_ledger.h"

#include "manager/guarded_callback.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace kaz::wifi {

// A task's entry in the ledger. The request ends when the task has run. It cannot end later, with the last copy of the
// task: the thread that posted it may still have one when the loop runs the idle pass, and no other pass might follow.
// What did not run ends when it is destroyed. An asker's task has no request.
class RequestLedger::Ticket : NonCopyable {
  public:
    Ticket(RequestLedger& ledger, Number number, Request request)
        : ledger_(ledger), number_(number), request_(std::move(request)) {}
    ~Ticket() { end(request_ ? std::optional(RequestFailure::dropped) : std::nullopt); }

    void run() {
        ledger_.communicator_.forgetFailures();
        try {
            end(request_ ? request_() : std::nullopt);
        } catch (...) {
            end(RequestFailure::refused);
            throw;
        }
    }

  private:
    void end(std::optional<RequestFailure> failure) {
        if (!std::exchange(ended_, true)) {
            ledger_.end(number_, failure);
        }
    }

    RequestLedger& ledger_;
    const Number number_;
    const Request request_;
    bool ended_ = false;
};

void RequestLedger::post(Request request) {
    Number number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = ++last_;
        open_.insert(number);
    }
    post(number, std::move(request));
}

// The asker's own task makes the loop run an idle pass. It also waits behind the communicator's first task, which reads
// the first state. If it is dropped, 4096 others cause an idle pass.
void RequestLedger::whenCarriedOut(Callback callback) {
    Number number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = ++last_;
        open_.insert(number);
        askers_.push_back({number, std::move(callback), std::exchange(unasked_, {})});
    }
    post(number, nullptr);
}

void RequestLedger::post(Number number, Request request) {
    const auto ticket = std::make_shared<Ticket>(*this, number, std::move(request));
    communicator_.pushTaskAsync_([ticket] { ticket->run(); });
}

void RequestLedger::end(Number number, std::optional<RequestFailure> failure) {
    const auto told = failure ? std::optional(explained(*failure)) : std::nullopt;
    const std::lock_guard lock(mutex_);
    open_.erase(number);
    if (told) {
        firstFrom(number).insert_or_assign(told->first, told->second);
    }
}

RequestLedger::Failures::value_type RequestLedger::explained(RequestFailure failure) {
    switch (failure) {
        case RequestFailure::refused:
        case RequestFailure::notSaved:
        case RequestFailure::unitRefused:
            return {failure, communicator_.lastFailure()};
        case RequestFailure::dropped:
        case RequestFailure::notAttached:
        case RequestFailure::unknownNetwork:
        case RequestFailure::choiceNotWritten:
            break;
    }
    return {failure, FailureReason::none};
}

void RequestLedger::note(RequestFailure failure) {
    const std::lock_guard lock(mutex_);
    unasked_.insert_or_assign(failure, FailureReason::none);
}

RequestLedger::Failures& RequestLedger::firstFrom(Number number) {
    const auto asker = std::find_if(askers_.begin(), askers_.end(),
                                    [number](const Asker& one) { return one.number > number; });
    return asker == askers_.end() ? unasked_ : asker->failures;
}

void RequestLedger::idle(std::optional<bool> saved) {
    for (const Asker& asker : takeDue(saved)) {
        if (asker.callback) {
            callGuarded([&asker] { asker.callback(asker.failures); });
        }
    }
}

std::vector<RequestLedger::Asker> RequestLedger::takeDue(std::optional<bool> saved) {
    const auto unsaved = explained(RequestFailure::notSaved);
    const std::lock_guard lock(mutex_);
    std::vector<Asker> due;
    while (!askers_.empty() && (open_.empty() || *open_.begin() > askers_.front().number)) {
        due.push_back(std::move(askers_.front()));
        askers_.pop_front();
    }
    if (saved == false) {
        for (Asker& asker : due) {
            asker.failures.insert(unsaved);
        }
        if (due.empty()) {
            firstFrom(0).insert(unsaved);
        }
    }
    return due;
}

}  // namespace kaz::wifi
