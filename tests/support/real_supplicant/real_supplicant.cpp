#include "support/real_supplicant/real_supplicant.h"

#include "support/process/running_program.h"

namespace kaz::test {
namespace {

std::string probe() {
    // The daemon's parent ends with 0 once the daemon would run. The namespace ends with the shell, and the daemon too.
    RunningProgram program(
        {"sh", "-c",
         "PATH=$PATH:/usr/sbin:/sbin; [ $(id -u) = 0 ] || user='--map-current-user --keep-caps'; "
         "exec unshare $user --net --pid --fork --kill-child sh -c 'ip link add kaz0 type veth peer name "
         "kaz1 && "
         "exec wpa_supplicant -B -i kaz0 -D wired -c /dev/null'"});
    if (program.wait().status == 0) {
        return "";
    }
    return "needs a wpa_supplicant that starts with its wired driver, ip, and the right to make "
           "namespaces: " +
           program.out() + program.err();
}

}  // namespace

const std::string& whyNoRealSupplicant() {
    static const std::string reason = probe();
    return reason;
}

}  // namespace kaz::test
