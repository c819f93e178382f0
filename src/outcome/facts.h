#pragma once

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

namespace kaz::wifi {

// What is known of one attempt and the connection that followed it.
struct Facts {
    // Who ended it.
    enum class End : std::int32_t {
        bySystem,
        givenUp,   // the user
        replaced,  // another attempt
        supplicantGone,
    };

    // What became of our request to the supplicant.
    enum class Request : std::int32_t {
        accepted,
        refused,
        unanswered,
        failed,  // refused or unanswered: the platform does not tell
    };

    std::string ssid;
    End end = End::bySystem;
    Stage stage = Stage::requested;
    Request request = Request::accepted;
    std::optional<SecurityMode> requested;  // unknown for a network that was configured before
    bool hidden = false;                    // the network may hide its SSID
    std::optional<bool> hashToElement{};    // whether the supplicant can do it; unknown unless it told
    bool radioOff = false;
    bool silent = false;           // at the end the supplicant answered no call and reported nothing
    bool linkDown = false;         // the supplicant has left link set-up, or the link
    bool authenticated = false;    // the access point accepted a step of the authentication
    bool saeMismatch = false;      // the supplicant reported that the SAE password does not match
    int failedExchanges = 0;       // attempts before this one, in a row, that failed in the exchange of keys
    int lastSignal = NoSignaldBm;  // dBm, of the connection
    Evidence evidence;

    bool wasUp() const { return stage >= Stage::address; }
    bool wasTried() const { return stage >= Stage::authenticating; }

    // Rekeying and roaming repeat earlier stages.
    void advanceTo(Stage reached) { stage = std::max(stage, reached); }
};

}  // namespace kaz::wifi
