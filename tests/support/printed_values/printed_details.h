#pragma once

#include "support/printed_values/printed_values.h"

#include <wifi/connection_details.h>

#include <ostream>

// How GoogleTest prints a cause and what belongs to it. Include this header in every source of a program that compares
// them.
namespace kaz::wifi {

inline void PrintTo(Cause cause, std::ostream* out) {
    printName(cause, {"none",           "unknown",   "outOfRange",   "nothingInCommon", "wrongKey",
                      "refused",        "full",      "banned",       "eapRejected",     "serverUntrusted",
                      "noEapMethod",    "noAddress", "radioBlocked", "supplicantGone",  "supplicantSilent",
                      "requestRefused", "givenUp",   "replaced",     "weakSignal",      "accessPointGone",
                      "deauthenticated"},
              out);
}

inline void PrintTo(Certainty certainty, std::ostream* out) {
    printName(certainty, {"unknown", "probable", "certain"}, out);
}

inline void PrintTo(Stage stage, std::ostream* out) {
    printName(
        stage,
        {"none", "requested", "authenticating", "associating", "eap", "keyExchange", "address", "online"},
        out);
}

inline void PrintTo(Evidence::Sender sender, std::ostream* out) {
    printName(sender, {"nobody", "accessPoint", "device"}, out);
}

inline void PrintTo(Evidence::Eap eap, std::ostream* out) {
    printName(eap,
              {"none", "started", "methodRefused", "methodAgreed", "serverRefused", "rejected", "succeeded"},
              out);
}

// Without the network's demands.
inline void PrintTo(const Evidence& evidence, std::ostream* out) {
    *out << "reason " << evidence.reasonCode << " by ";
    PrintTo(evidence.reasonSender, out);
    *out << ", authentication " << evidence.authenticationStatus << ", association "
         << evidence.associationStatus << ", EAP ";
    PrintTo(evidence.eap, out);
    *out << (evidence.keyExchange ? ", keys" : "") << (evidence.mismatchReported ? ", mismatch" : "")
         << (evidence.scanned ? ", scanned" : "") << (evidence.seen ? ", seen at " : ", not seen at ")
         << evidence.signal << " dBm";
}

inline void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << '\'' << outcome.ssid << "' ";
    PrintTo(outcome.stage, out);
    *out << ": ";
    PrintTo(outcome.cause, out);
    *out << ", ";
    PrintTo(outcome.certainty, out);
    *out << " (";
    PrintTo(outcome.evidence, out);
    *out << ") @ " << outcome.time.time_since_epoch().count() << " ns";
}

}  // namespace kaz::wifi
