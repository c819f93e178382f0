#pragma once

#include "simulator/world/setting.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::sim {

// One network block: its validated fields in text form.
class NetworkConfig {
  public:
    // Sets a field to a text from a configuration file. Returns false and changes nothing if the field is
    // unknown or the value is invalid.
    bool setText(std::string_view name, std::string_view text, const std::vector<std::string>& eapMethods);

    // Sets a field to a value from the bus. For most fields a string is put in quotes.
    bool set(std::string_view name, const Setting& value, const std::vector<std::string>& eapMethods);

    // Sets all these fields, or none if one is refused.
    bool setAll(const Settings& settings, const std::vector<std::string>& eapMethods);

    // The field's text form, or the initial one if it was not set; empty if there is none.
    std::string_view text(std::string_view name) const;
    int number(std::string_view name) const;
    std::string bytes(std::string_view name) const;
    bool has(std::string_view name) const { return values_.find(name) != values_.end(); }
    bool hasKeyword(std::string_view name, std::string_view word) const;

    std::string ssid() const { return bytes("ssid"); }
    bool enabled() const { return number("disabled") == 0; }
    void setEnabled(bool enabled) { values_.insert_or_assign("disabled", enabled ? "0" : "1"); }

    // Every field that was set or has an initial value, without secrets.
    std::vector<std::pair<std::string, std::string>> shown() const;

    // The fields that were set, in order, with secrets; for the configuration file.
    std::vector<std::pair<std::string, std::string>> stored() const;

    // False for a network without the key that it needs: SaveConfig leaves it out.
    bool complete() const;

  private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace kaz::sim
