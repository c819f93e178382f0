// The file with the user's choice of Wi-Fi on or off.
#include <cerrno>

#include "base/errno_text.h"
#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {

using inspection::Obstacle;

void examineChoice(Examination& examination) {
    const inspection::ChoiceFile& file = examination.facts().choiceFile;
    const std::string path = file.path.string();
    if (file.writeError == EISDIR) {
        examination.broken(Link::choice, path + " is a folder, so Wi-Fi cannot be switched off",
                           "mv " + word(path) + ' ' + word(path + ".old"));
        return;
    }
    if (file.choice.is(Obstacle::notAllowed)) {
        examination.notLookedAt(Link::choice, path + ": " + file.choice.why());
        return;
    }
    if (file.choice.isUnknown()) {
        examination.broken(Link::choice, path + " cannot be read: " + file.choice.why(),
                           "mv " + word(path) + ' ' + word(path + ".old"));
        return;
    }
    if (file.choice.isKnown() && *file.choice == "off") {
        examination.broken(Link::choice, "Wi-Fi is switched off", "kazwifictl on");
    } else if (file.choice.isKnown() && *file.choice != "on") {
        examination.broken(Link::choice, path + " says neither wifi=on nor wifi=off, which means off",
                           "kazwifictl on");
    }
    if (file.writeError == EROFS) {
        examination.broken(
            Link::choice, path + " is on a read-only file system, so on and off are not kept",
            "mount -o remount,rw \"$(stat --format=%m " + word(file.path.parent_path().string()) + ")\"");
    } else if (file.writeError != 0 && examination.facts().user != 0) {
        examination.notLookedAt(Link::choice, "whether the device's program may write " + path);
    } else if (file.writeError != 0) {
        examination.broken(Link::choice, path + " cannot be written: " + errnoText(file.writeError),
                           "chattr -i " + word(file.path.parent_path().string()));
    }
    examination.ok(Link::choice, "Wi-Fi is switched on");
}

}  // namespace kaz::doctor
