#include "requests/country.h"

#include <vector>

#include "inspection/bus_queries.h"

namespace kaz::requests {
namespace {

using inspection::Answer;
using inspection::BusQueries;

constexpr const char* service = "fi.w1.wpa_supplicant1";
constexpr const char* rootPath = "/fi/w1/wpa_supplicant1";
constexpr const char* interfaceType = "fi.w1.wpa_supplicant1.Interface";

bool noArguments(sd_bus_message* /*message*/) {
    return true;
}

// Each request is made in the reply to the one before it.
class CountryRequest {
  public:
    CountryRequest(std::string country, std::chrono::milliseconds limit)
        : country_(std::move(country)), queries_(limit) {}

    Change make() {
        change_.trouble = queries_.trouble();
        if (change_.trouble.empty()) {
            queries_.askProperties(service, rootPath, service, [this](const Answer& answer) {
                std::vector<std::string> paths;
                const bool read =
                    answer.message != nullptr &&
                    inspection::readProperties(answer.message, {{"Interfaces", inspection::into(paths)}});
                if (read && !paths.empty()) {
                    set(paths.front());
                } else {
                    change_.trouble = read ? "wpa_supplicant has no interface" : answer.unknown.why;
                }
            });
            queries_.run();
        }
        return change_;
    }

  private:
    void set(const std::string& path) {
        const auto append = [this](sd_bus_message* message) {
            return sd_bus_message_append(message, "ssv", interfaceType, "Country", "s", country_.c_str()) >=
                   0;
        };
        queries_.ask(service, path, "org.freedesktop.DBus.Properties", "Set", append,
                     [this, path](const Answer& answer) {
                         change_.done = answer.message != nullptr;
                         change_.trouble = answer.unknown.why;
                         if (change_.done) {
                             save(path);
                         }
                     });
    }

    void save(const std::string& path) {
        queries_.ask(service, path, interfaceType, "SaveConfig", noArguments, [this](const Answer& answer) {
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
