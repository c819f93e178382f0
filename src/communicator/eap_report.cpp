#include "communicator/eap_report.h"

namespace kaz::wifi {

Evidence::Eap fromEapStatus(std::string_view status, std::string_view parameter) {
    if (status == "started") {
        return Evidence::Eap::started;
    }
    if (status == "accept proposed method") {
        return Evidence::Eap::methodAgreed;
    }
    if (status == "refuse proposed method") {
        return Evidence::Eap::methodRefused;
    }
    // Our alert to the server. Its alerts to us are followed by a failure.
    if (status == "local TLS alert") {
        return Evidence::Eap::serverRefused;
    }
    if (status == "remote certificate verification") {
        return parameter == "success" ? Evidence::Eap::none : Evidence::Eap::serverRefused;
    }
    if (status == "completion") {
        return parameter == "success" ? Evidence::Eap::succeeded : Evidence::Eap::rejected;
    }
    return Evidence::Eap::none;
}

}  // namespace kaz::wifi
