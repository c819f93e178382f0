#include "kazwifictl/commands/connect_plan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using test::connectedTo;
using test::network;
using wifi::SecurityMode;

Snapshot someView() {
    Snapshot view;
    view.running = true;
    view.networks = {
        network("Cafe", -60, SecurityMode::none), network("Home", -50, SecurityMode::rsnPsk, true),
        network("Office", -55, SecurityMode::rsnPsk), network("Campus", -70, SecurityMode::enterprise)};
    return view;
}

std::string nameOfPlan(const ConnectPlan& plan) {
    if (const auto* failure = std::get_if<Failure>(&plan)) {
        return std::string(nameOf(failure->code)) + ": " + failure->why;
    }
    if (const auto* settings = std::get_if<UseSettings>(&plan)) {
        return "settings " + std::to_string(static_cast<int>(settings->settings.securityMode)) +
               (settings->replaces ? " replace" : "");
    }
    if (const auto* saved = std::get_if<UseSaved>(&plan)) {
        return saved->inRange ? "saved" : "saved?";
    }
    if (std::holds_alternative<AlreadyConnecting>(plan)) {
        return "wait";
    }
    return std::holds_alternative<AlreadyConnected>(plan) ? "already" : "look";
}

ConnectOptions given(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"connect", "Any"});
    return std::get<Options>(parseCommandLine(arguments)).connect;
}

TEST(ConnectPlan, FollowsFromWhatIsKnownAndAskedFor) {
    struct Case {
        std::string ssid;
        ConnectOptions options;
        bool looked;
        std::string plan;
    };
    const std::vector<Case> cases{
        {"Home", {}, false, "saved"},
        {"Office", {}, false, "settings 3"},
        {"Cafe", {}, false, "settings 0"},
        {"Home", given({"--password-file", "-"}), false, "settings 3 replace"},
        {"Home", given({"--security", "wpa3"}), false, "settings 4 replace"},
        {"Home", given({"--replace"}), false, "settings 3 replace"},
        {"Office", given({"--replace"}), false, "settings 3"},
        {"Campus", {}, false, "usage: an enterprise network needs an identity"},
        {"Campus", given({"--identity", "ada", "--private-key", "k", "--eap", "PEAP"}), false,
         "usage: a private key is for the EAP method TLS"},
        {"Campus", given({"--identity", "ada", "--private-key", "k", "--eap", "TLS"}), false, "settings 5"},
        {"Cafe", given({"--ca-file", "ca.pem"}), false,
         "usage: only an enterprise network uses certificates"},
        {"Elsewhere", {}, false, "look"},
        {"Elsewhere", {}, true, "saved?"},
        {"Elsewhere", given({"--password-file", "-"}), false, "look"},
        {"Elsewhere", given({"--password-file", "-"}), true,
         "not-found: no network with this name is in range"},
        {"Elsewhere", given({"--security", "wpa2"}), false, "settings 3"},
        {"Elsewhere", given({"--hidden"}), false,
         "usage: the list does not show the security of a hidden network"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(nameOfPlan(planConnect(each.ssid, each.options, someView(), each.looked)), each.plan)
            << each.ssid << (each.looked ? " after a look" : "");
    }
}

TEST(ConnectPlan, TakesTheModeThatJoinsTheNetworkOrSaysWhatItAsksFor) {
    Snapshot view = someView();
    view.networks.push_back(network("Future", -60, SecurityMode::unsupported));
    view.networks.push_back(network("Closed", -60, SecurityMode::unsupported));
    view.access["Future"] = {{}, SecurityMode::sae};
    view.access["Closed"].demands.owe = true;
    EXPECT_EQ(nameOfPlan(planConnect("Future", {}, view, false)), "settings 4");
    const ConnectPlan plan = planConnect("Closed", {}, view, false);
    EXPECT_EQ(nameOfPlan(plan), "refused: it asks for Enhanced Open, which this device lacks");
    EXPECT_EQ(std::get<Failure>(plan).advice, "WPA2 or WPA3 personal at the access point");
    EXPECT_EQ(nameOfPlan(planConnect("Closed", given({"--security", "wpa2"}), view, false)), "settings 3");
}

TEST(ConnectPlan, LeavesAConnectionAloneThatIsThere) {
    Snapshot view = someView();
    view.connection.info = connectedTo("Mine", -40);
    EXPECT_EQ(nameOfPlan(planConnect("Mine", {}, view, false)), "already");
    EXPECT_EQ(nameOfPlan(planConnect("Mine", given({"--password-file", "-"}), view, false)),
              "usage: the security of the network in use is not known yet");
    EXPECT_EQ(nameOfPlan(planConnect("Mine", given({"--security", "wpa2"}), view, false)),
              "settings 3 replace");
    view.connection.network = {SecurityMode::sae, {2, 0, 0, 0, 0, 1}, 2412, 0};
    EXPECT_EQ(nameOfPlan(planConnect("Mine", given({"--password-file", "-"}), view, false)),
              "settings 4 replace");
    for (const auto status :
         {wifi::ConnectionInfo::Status::connectingWifi, wifi::ConnectionInfo::Status::connectingIP}) {
        view.connection.info.status = status;
        EXPECT_EQ(nameOfPlan(planConnect("Mine", {}, view, false)), "wait");
    }
}

TEST(ConnectPlan, AllowsAMissingIdentityOnlyIfTheUserCanBeAsked) {
    EXPECT_EQ(nameOfPlan(planConnect("Campus", {}, someView(), false, true)), "settings 5");
}

TEST(ConnectPlan, FillsInEverythingThatWasGiven) {
    const ConnectOptions options =
        given({"--identity", "ada", "--anonymous-identity", "anon", "--eap", "PEAP", "--phase2", "MSCHAPV2",
               "--hidden", "--ca-file", "/etc/ca", "--domain", "example.org", "--client-cert", "own.pem"});
    const ConnectPlan plan = planConnect("Campus", options, someView(), false);
    ASSERT_TRUE(std::holds_alternative<UseSettings>(plan));
    const auto& settings = std::get<UseSettings>(plan).settings;
    EXPECT_EQ(settings.ssid, "Campus");
    EXPECT_EQ(settings.securityMode, SecurityMode::enterprise);
    EXPECT_EQ(settings.identity, "ada");
    EXPECT_EQ(settings.anonymousIdentity, "anon");
    EXPECT_EQ(settings.eapMethod, "PEAP");
    EXPECT_EQ(settings.phase2Method, "MSCHAPV2");
    EXPECT_TRUE(settings.hidden);
    EXPECT_TRUE(settings.password.empty());
    const auto& certificates = std::get<UseSettings>(plan).certificates;
    EXPECT_EQ(certificates.caFile, "/etc/ca");
    EXPECT_EQ(certificates.serverDomain, "example.org");
    EXPECT_EQ(certificates.clientFile, std::filesystem::current_path() / "own.pem");
    EXPECT_EQ(certificates.keyFile, "");
}

}  // namespace
}  // namespace kaz::ctl
