#include "simulator/device/unit.h"

#include <utility>

namespace kaz::sim {

Unit::Unit(const Scheduler& scheduler, const Times& times, ServiceProcess& process,
           std::function<void()> changed)
    : scheduler_(scheduler), times_(times), process_(process), changed_(std::move(changed)) {
    process_.exited = [this](bool cleanly) { exited(cleanly); };
}

void Unit::start(Done done) {
    if (states_.active == "active" || states_.active == "reloading") {
        done(true);
        return;
    }
    finish(false);
    done_ = std::move(done);
    if (states_.active == "activating" && !restart_.pending()) {
        return;  // in progress
    }
    if (states_.active == "deactivating") {
        process_.stop([this] { launch(); });
    } else {
        launch();
    }
}

void Unit::stop(Done done) {
    restart_.cancel();
    if (states_.active == "inactive" || states_.active == "failed") {
        done(true);
        return;
    }
    finish(false);
    done_ = std::move(done);
    set({"deactivating", "stop-sigterm"});
    process_.stop([this] {
        set({"inactive", "dead"});
        finish(true);
    });
}

void Unit::restart(Done done) {
    if (states_.active == "inactive" || states_.active == "failed") {
        start(std::move(done));
        return;
    }
    finish(false);
    restart_.cancel();
    done_ = std::move(done);
    set({"deactivating", "stop-sigterm"});
    process_.stop([this] { launch(); });
}

void Unit::resetFailed() {
    if (states_.active == "failed") {
        set({"inactive", "dead"});
    }
}

void Unit::force(const States& states) {
    set(states);
}

void Unit::launch() {
    restart_.cancel();
    set({"activating", "start"});
    process_.start([this] {
        set({"active", "running"});
        finish(true);
    });
}

void Unit::exited(bool cleanly) {
    if (!cleanly && autoRestart_) {
        set({"activating", "auto-restart"});
        restart_ = scheduler_.after(times_.unitRestart, [this] { launch(); });
        return;
    }
    set(cleanly ? States{"inactive", "dead"} : States{"failed", "failed"});
    finish(false);
}

void Unit::set(const States& states) {
    if (std::exchange(states_, states) != states) {
        changed_();
    }
}

void Unit::finish(bool done) {
    if (const auto notify = std::exchange(done_, nullptr)) {
        notify(done);
    }
}

}  // namespace kaz::sim
