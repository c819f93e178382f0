#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/world/setting.h"

namespace kaz::sim {

// One network block: its fields in their text forms, checked.
class NetworkConfig {
  public:
    // The text form from a configuration file. False when the field is unknown or cannot have that value; the
    // block is unchanged then.
    bool setText(std::string_view name, std::string_view text, const std::vector<std::string>& eapMethods);

    // A value as it comes over the bus: texts are put in quotes for most fields.
    bool set(std::string_view name, const Setting& value, const std::vector<std::string>& eapMethods);

    // All of them, or none when one is refused.
    bool setAll(const Settings& settings, const std::vector<std::string>& eapMethods);

    // The field's text form, the initial one when nothing was set; empty for none.
    std::string_view text(std::string_view name) const;
    int number(std::string_view name) const;
    std::string bytes(std::string_view name) const;
    bool has(std::string_view name) const { return values_.find(name) != values_.end(); }
    bool hasKeyword(std::string_view name, std::string_view word) const;

    std::string ssid() const { return bytes("ssid"); }
    bool enabled() const { return number("disabled") == 0; }
    void setEnabled(bool enabled) { values_.insert_or_assign("disabled", enabled ? "0" : "1"); }

    // What may be shown: every field that was set or has an initial value, but no secrets.
    std::vector<std::pair<std::string, std::string>> shown() const;

    // What was set, in order, with secrets; for the configuration file.
    std::vector<std::pair<std::string, std::string>> stored() const;

    // False for a network that asks for a key and has none: it is not worth a place in the file.
    bool complete() const;

  private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace kaz::sim
