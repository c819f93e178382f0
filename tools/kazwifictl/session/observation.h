#pragma once

#include <utility>

#include "kazwifictl/session/session.h"

namespace kaz::ctl {

// Lets somebody see a session's events for a while.
class Observation {
  public:
    Observation(Session& session, Session::Observer observer) : session_(session) {
        session_.observe(std::move(observer));
    }
    ~Observation() { session_.observe({}); }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;
    Observation(Observation&&) = delete;
    Observation& operator=(Observation&&) = delete;

  private:
    Session& session_;
};

}  // namespace kaz::ctl
