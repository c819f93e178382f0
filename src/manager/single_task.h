#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"

#include <functional>
#include <memory>
#include <utility>

namespace kaz::wifi {

// Posts a task unless the last one still waits or runs. A task that a full queue drops, or that throws, counts as
// ended. Loop thread only.
class SingleTask : NonCopyable {
  public:
    explicit SingleTask(Communicator& communicator) : communicator_(communicator) {}

    void post(std::function<void()> task) {
        if (last_.expired()) {
            const auto shared = std::make_shared<std::function<void()>>(std::move(task));
            last_ = shared;
            communicator_.pushTaskAsync_([shared] { (*shared)(); });
        }
    }

  private:
    Communicator& communicator_;
    std::weak_ptr<std::function<void()>> last_;
};

}  // namespace kaz::wifi
