#include "vm/chaos_world.h"

#include "vm/command.h"
#include "vm/daemons.h"

namespace kaz::vm {

void heal(World& world) {
    for (Neighbour& neighbour : world.neighbours) {
        neighbour.accessPoint.restore();
    }
    for (const std::string& remedy : world.remedies) {
        run(remedy);
    }
    world.remedies.clear();
    if (!linkIsUp()) {
        run("ip link set wlan0 up");
    }
    if (!isSwitchedOn()) {
        world.witness.manager().setEnabled(true);
    } else if (!unitIsActive()) {
        succeeds("systemctl reset-failed wpa_supplicant");
        run("systemctl start wpa_supplicant");
    }
}

}  // namespace kaz::vm
