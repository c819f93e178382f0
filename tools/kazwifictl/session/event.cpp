#include "kazwifictl/session/event.h"

namespace kaz::ctl {
namespace {

struct Apply {
    View& view;

    void operator()(const PowerChange& power) const {
        view.enabled = power.enabled;
        view.running = power.running;
        if (!power.running) {
            view.scanning = false;  // the library announces this end of a scan with the power only
        }
    }
    void operator()(const ScanningChange& scan) const { view.scanning = scan.scanning; }
    void operator()(const NetworksChange& list) const { view.networks = list.networks; }
    void operator()(const ConnectionChange& connection) const { view.connection = connection.info; }
};

}  // namespace

void View::apply(const Event& event) {
    std::visit(Apply{*this}, event.change);
}

}  // namespace kaz::ctl
