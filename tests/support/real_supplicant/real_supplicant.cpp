#include "support/real_supplicant/real_supplicant.h"

#include "support/process/running_program.h"

namespace kaz::test {

std::string whyNoRealSupplicant() {
    // The daemon's parent ends with 0 once the daemon would run. The namespace ends with the shell, and the daemon too.
    RunningProgram probe(
        {"sh", "-c",
         "PATH=$PATH:/usr/sbin:/sbin; [ $(id -u) = 0 ] || user='--map-current-user --keep-caps'; "
         "exec unshare $user --net --pid --fork --kill-child sh -c 'ip link add kaz0 type veth peer name "
         "kaz1 && "
         "exec wpa_supplicant -B -i kaz0 -D wired -c /dev/null'"});
    if (probe.wait().status == 0) {
        return "";
    }
    return "needs a wpa_supplicant that starts with its wired driver, ip, and the right to make "
           "namespaces: " +
           probe.out() + probe.err();
}

}  // namespace kaz::test
