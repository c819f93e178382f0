// The IEEE 802.11 codes that the rules know by name.
#pragma once

namespace kaz::wifi {

namespace reason {
inline constexpr int unspecified = 1;
inline constexpr int previousAuthenticationInvalid = 2;
inline constexpr int leaving = 3;
inline constexpr int inactivity = 4;
inline constexpr int accessPointBusy = 5;
inline constexpr int stationHasLeft = 8;
inline constexpr int invalidElement = 13;
inline constexpr int micFailure = 14;
inline constexpr int fourWayHandshakeTimeout = 15;
inline constexpr int groupKeyHandshakeTimeout = 16;
inline constexpr int elementDiffers = 17;
inline constexpr int eapFailed = 23;
inline constexpr int cipherRejected = 24;
}  // namespace reason

namespace status {
inline constexpr int unspecified = 1;
inline constexpr int capabilitiesUnsupported = 10;
inline constexpr int algorithmUnsupported = 13;
inline constexpr int challengeFailed = 15;
inline constexpr int tooManyStations = 17;
inline constexpr int ratesUnsupported = 18;
inline constexpr int protectionPolicy = 31;
inline constexpr int invalidElement = 40;
inline constexpr int cipherRejected = 46;
inline constexpr int groupUnsupported = 77;
inline constexpr int unknownPasswordIdentifier = 123;
inline constexpr int hashToElement = 126;  // no refusal: the first step of SAE by hash-to-element
}  // namespace status

}  // namespace kaz::wifi
