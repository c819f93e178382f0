// What the device's daemons and the kernel say of the device. No process is started for an answer, because in the
// emulated guest a process takes longer than everything else that a comparison does.
#pragma once

#include <string>
#include <vector>

namespace kaz::vm {

// The answer at the supplicant's control socket of wlan0, which wpa_cli uses, too. Empty when there is none.
std::string askSupplicant(const std::string& request);

// The value of NAME=value in an answer, or nothing.
std::string value(const std::string& answer, const std::string& name);

// The fields of each line after the heading, of an answer that is a table.
std::vector<std::vector<std::string>> table(const std::string& answer);

// The supplicant prints other bytes than printable ASCII as \xNN, and a backslash before \ and ".
std::string unescaped(const std::string& printed);

bool unitIsActive();          // systemd on the supplicant's unit
bool supplicantIsScanning();  // the supplicant on wlan0
bool isOnline();              // networkd
bool linkIsUp();              // the kernel on wlan0
bool isSwitchedOn();          // the device's configuration file

}  // namespace kaz::vm
