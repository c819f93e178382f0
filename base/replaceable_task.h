#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace kaz {

// A function that may replace itself while it runs: the running function stays alive until it returns. Not
// thread-safe.
template <typename Signature>
class ReplaceableTask;

template <typename Result, typename... Arguments>
class ReplaceableTask<Result(Arguments...)> {
  public:
    using Function = std::function<Result(Arguments...)>;

    void set(Function function) { function_ = std::make_shared<const Function>(std::move(function)); }

    // Without a function it does nothing and returns a default value.
    Result operator()(Arguments... arguments) const {
        const auto running = function_;
        return running && *running ? (*running)(std::forward<Arguments>(arguments)...) : Result();
    }

  private:
    std::shared_ptr<const Function> function_;
};

}  // namespace kaz
