#include "manager/enabled_choice.h"

#include "base/log.h"

namespace kaz::wifi {

// One call of setEnabled(), also if it ends with an exception.
class EnabledChoice::Call : NonCopyable {
  public:
    Call(EnabledChoice& owner, bool on) : owner_(owner), choice_(owner.begin(on)) {}
    ~Call() { owner_.end(); }

    Choice choice() const { return choice_; }

  private:
    EnabledChoice& owner_;
    const Choice choice_;
};

EnabledChoice::EnabledChoice(Communicator& communicator, Published& published, RequestLedger& requests)
    : communicator_(communicator),
      published_(published),
      requests_(requests),
      enabled_(communicator.readEnabledConfiguration()) {}

void EnabledChoice::setEnabled(bool on) {
    log::info("Turning wifi {}", on ? "on" : "off");
    const Call call(*this, on);
    if (call.choice().changesFlag) {
        communicator_.pushTaskAsync_([this] { published_.notify(Published::Change::enabled); });
    }
    if (!store()) {
        requests_.note(RequestFailure::choiceNotWritten);
    }
    // Also without a change: a repeated "on" tries again to start the supplicant.
    requests_.post([this, choice = call.choice()] { return taskStartOrStopSupplicant(choice); });
}

EnabledChoice::Choice EnabledChoice::begin(bool on) {
    const std::lock_guard lock(mutex_);
    const bool former = enabled_.exchange(on);
    return {++begun_, on, former != on};
}

void EnabledChoice::end() {
    const std::lock_guard lock(mutex_);
    ++ended_;
}

// The write of an older choice may come last when two threads write. Its thread then writes again.
bool EnabledChoice::store() {
    bool stored = false;
    Choice written;
    do {
        written = latest();
        stored = communicator_.writeEnabledConfiguration(written.on);
    } while (written.number != latest().number);
    return stored;
}

// The tasks of two threads may be posted in the other order than their choices were made.
std::optional<RequestFailure> EnabledChoice::taskStartOrStopSupplicant(Choice choice) {
    if (choice.number > applied_.number) {
        applied_ = choice;
    }
    return communicator_.startStopSupplicantSync(applied_.on) ? std::nullopt
                                                              : std::optional(RequestFailure::unitRefused);
}

EnabledChoice::Choice EnabledChoice::latest() {
    const std::lock_guard lock(mutex_);
    return {begun_, enabled_, false};
}

bool EnabledChoice::adoptStoredChoice() {
    std::uint64_t before = 0;
    {
        const std::lock_guard lock(mutex_);
        if (begun_ != ended_) {
            return false;
        }
        before = begun_;
    }
    const bool stored = communicator_.readEnabledConfiguration();
    const std::lock_guard lock(mutex_);
    // A choice that was made during the read is newer than what was read.
    return begun_ == before && enabled_.exchange(stored) != stored;
}

}  // namespace kaz::wifi
