#include "doctor/examination.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kaz::doctor {

void Examination::broken(Link link, std::string what, std::string remedy) {
    findings_.push_back({link, Verdict::broken, std::move(what), std::move(remedy), {}});
}

void Examination::doubtful(Link link, std::string what, std::string remedy, std::vector<std::string> ssids) {
    findings_.push_back({link, Verdict::doubtful, std::move(what), std::move(remedy), std::move(ssids)});
}

void Examination::notLookedAt(Link link, std::string why) {
    findings_.push_back({link, Verdict::notLookedAt, std::move(why), {}, {}});
}

void Examination::ok(Link link, std::string what) {
    if (!has(link)) {
        findings_.push_back({link, Verdict::ok, std::move(what), {}, {}});
    }
}

bool Examination::has(Link link) const {
    return std::any_of(findings_.begin(), findings_.end(),
                       [&](const Finding& each) { return each.link == link; });
}

bool Examination::isBroken(Link link) const {
    return std::any_of(findings_.begin(), findings_.end(), [&](const Finding& each) {
        return each.link == link && each.verdict == Verdict::broken;
    });
}

bool Examination::isAnyBroken(std::initializer_list<Link> links) const {
    return std::any_of(links.begin(), links.end(), [this](Link link) { return isBroken(link); });
}

std::vector<Finding> Examination::take() {
    std::stable_sort(findings_.begin(), findings_.end(), [](const Finding& one, const Finding& other) {
        return std::pair(one.verdict, one.link) < std::pair(other.verdict, other.link);
    });
    return std::move(findings_);
}

std::string Examination::interface() const {
    if (facts_.unit.isKnown()) {
        const std::vector<std::string> named = interfacesIn(facts_.unit->command);
        if (!named.empty()) {
            return named.front();
        }
    }
    if (facts_.supplicant.isKnown() && !facts_.supplicant->interfaces.empty()) {
        return facts_.supplicant->interfaces.front().name;
    }
    const auto first = std::find_if(facts_.links.begin(), facts_.links.end(),
                                    [](const inspection::Link& each) { return each.isWireless; });
    return first == facts_.links.end() ? "" : first->name;
}

const inspection::Link* Examination::link() const {
    const auto found = std::find_if(facts_.links.begin(), facts_.links.end(),
                                    [name = interface()](const auto& each) { return each.name == name; });
    return found == facts_.links.end() ? nullptr : &*found;
}

std::string word(const std::string& text) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:=+,@";
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) {
        return text;
    }
    std::string result = "'";
    for (const char letter : text) {
        result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return result + "'";
}

std::string writing(const std::string& folder, const std::string& file,
                    const std::vector<std::string>& lines) {
    std::string result = "mkdir -p " + word(folder) + " && printf '%s\\n'";
    for (const std::string& line : lines) {
        result += ' ' + word(line);
    }
    return result + " > " + word(folder + '/' + file);
}

std::string dropIn(const std::string& file, const std::vector<std::string>& lines) {
    return writing("/etc/systemd/system/wpa_supplicant.service.d", file, lines) +
           " && systemctl daemon-reload && systemctl reset-failed " + supplicantUnit + " && " + restartUnit;
}

std::vector<std::pair<char, std::string>> optionsIn(const std::vector<std::string>& command) {
    constexpr std::string_view withValue = "bcCDefgGiImoOpP";
    std::vector<std::pair<char, std::string>> options;
    for (std::size_t i = 1; i < command.size(); ++i) {
        const std::string& argument = command[i];
        for (std::size_t at = 1; argument.starts_with('-') && at < argument.size(); ++at) {
            std::string value;
            const char letter = argument[at];
            if (withValue.find(letter) != std::string_view::npos) {
                const bool next = at + 1 == argument.size() && i + 1 < command.size();
                value = next ? command[++i] : argument.substr(at + 1);
                at = command[i].size();
            }
            options.emplace_back(letter, std::move(value));
            if (withValue.find(letter) != std::string_view::npos) {
                break;
            }
        }
    }
    return options;
}

std::vector<std::string> interfacesIn(const std::vector<std::string>& command) {
    std::vector<std::string> names;
    for (const auto& [letter, value] : optionsIn(command)) {
        if (letter == 'i') {
            names.push_back(value);
        }
    }
    return names;
}

}  // namespace kaz::doctor
