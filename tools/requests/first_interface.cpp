#include "requests/first_interface.h"

#include <vector>

namespace kaz::requests {

void askFirstInterface(inspection::BusQueries& queries, const std::function<void(const std::string&)>& found,
                       const std::function<void(const std::string&)>& failed) {
    if (!queries.trouble().empty()) {
        failed(queries.trouble());
        return;
    }
    queries.askProperties(supplicantService, "/fi/w1/wpa_supplicant1", supplicantService,
                          [found, failed](const inspection::Answer& answer) {
                              std::vector<std::string> paths;
                              const bool read =
                                  answer.message != nullptr &&
                                  inspection::readProperties(answer.message,
                                                             {{"Interfaces", inspection::into(paths)}});
                              if (read && !paths.empty()) {
                                  found(paths.front());
                              } else {
                                  failed(read ? "wpa_supplicant has no interface" : answer.unknown.why);
                              }
                          });
}

}  // namespace kaz::requests
