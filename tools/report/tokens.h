#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::report {

// Replaces names of networks, hardware addresses and IP addresses by tokens: "<ssid-1>", "<mac-2>", "<ip-1>". The same
// name always gets the same token, so one can still follow it through a text.
class Tokens {
  public:
    // Names that are replaced wherever they are, in each form in which a program may print them.
    void know(const std::string& ssid);

    // The token of an SSID.
    std::string ofSsid(const std::string& ssid);

    // A line of a log. Whatever is in quotes may be the name of a network, so it becomes a token too.
    std::string redacted(std::string_view line);

  private:
    std::string token(const std::string& kind, const std::string& value);
    std::string withoutNames(std::string line) const;
    std::string withoutQuotes(std::string line);
    void replaceBetween(std::string& line, std::size_t begin, std::size_t end, const std::string& kind);
    std::string withoutAddresses(std::string_view line);

    std::map<std::string, std::string> known_;  // each form of an SSID and its token
    std::map<std::string, std::map<std::string, std::string>> tokens_;
};

// The forms in which programs print an SSID: raw, hexadecimal digits, and with escapes.
std::vector<std::string> formsOf(const std::string& ssid);

}  // namespace kaz::report
