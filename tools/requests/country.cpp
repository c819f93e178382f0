#include "requests/country.h"

#include <utility>

#include "inspection/bus_queries.h"
#include "requests/first_interface.h"

namespace kaz::requests {
namespace {

using inspection::Answer;
using inspection::BusQueries;

bool noArguments(sd_bus_message* /*message*/) {
    return true;
}

// Each request is made in the reply to the one before it.
class CountryRequest {
  public:
    CountryRequest(std::string country, std::chrono::milliseconds limit)
        : country_(std::move(country)), queries_(limit) {}

    Change make() {
        askFirstInterface(
            queries_, [this](const std::string& path) { set(path); },
            [this](const std::string& why) { change_.trouble = why; });
        queries_.run();
        return change_;
    }

  private:
    void set(const std::string& path) {
        const auto append = [this](sd_bus_message* message) {
            return sd_bus_message_append(message, "ssv", interfaceType, "Country", "s", country_.c_str()) >=
                   0;
        };
        queries_.ask(supplicantService, path, "org.freedesktop.DBus.Properties", "Set", append,
                     [this, path](const Answer& answer) {
                         change_.done = answer.message != nullptr;
                         change_.trouble = answer.unknown.why;
                         if (change_.done) {
                             save(path);
                         }
                     });
    }

    void save(const std::string& path) {
        queries_.ask(supplicantService, path, interfaceType, "SaveConfig", noArguments,
                     [this](const Answer& answer) {
                         change_.saved = answer.message != nullptr;
                         change_.trouble = change_.saved ? "" : answer.unknown.why;
                     });
    }

    std::string country_;
    Change change_;
    BusQueries queries_;
};

}  // namespace

Change setCountry(const std::string& country, std::chrono::milliseconds limit) {
    return CountryRequest(country, limit).make();
}

}  // namespace kaz::requests
