#pragma once

#include <string>
#include <utility>
#include <variant>

namespace kaz::inspection {

// Why something could not be looked at.
enum class Obstacle {
    notLooked,   // nothing was asked, because what would answer is missing
    notAllowed,  // this user may not
    noAnswer,    // not in time
    failed,
};

struct Unknown {
    Obstacle obstacle = Obstacle::notLooked;
    std::string why = "it was not asked";  // such as "Permission denied"; never a secret
};

// A value; or "there is none", which is known too; or the reason why neither is known.
template <typename Value>
class Fact {
  public:
    Fact() = default;                                // unknown
    Fact(Value value) : state_(std::move(value)) {}  // NOLINT(google-explicit-constructor): a value is a fact
    Fact(Unknown unknown) : state_(std::move(unknown)) {}  // NOLINT(google-explicit-constructor)
    static Fact absent() {
        Fact fact;
        fact.state_ = Absent{};
        return fact;
    }

    bool isKnown() const { return std::holds_alternative<Value>(state_); }
    bool isAbsent() const { return std::holds_alternative<Absent>(state_); }
    bool isUnknown() const { return std::holds_alternative<Unknown>(state_); }
    bool is(Obstacle obstacle) const { return isUnknown() && std::get<Unknown>(state_).obstacle == obstacle; }

    // Only if isKnown().
    const Value& operator*() const { return std::get<Value>(state_); }
    const Value* operator->() const { return &std::get<Value>(state_); }
    // Only if isUnknown().
    const Unknown& unknown() const { return std::get<Unknown>(state_); }
    const std::string& why() const { return unknown().why; }
    // Moves the value out. Only if isKnown().
    Value&& take() { return std::move(std::get<Value>(state_)); }

  private:
    struct Absent {};
    std::variant<Unknown, Absent, Value> state_;
};

}  // namespace kaz::inspection
