#include "simulator/device/control_json.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace kaz::sim {
namespace {

using nlohmann::json;

FaultKind kindOf(const json& value) {
    const auto kind = faultKindFromText(value.get<std::string>());
    if (!kind) {
        throw std::runtime_error("not a kind of fault");
    }
    return *kind;
}

using Fields = std::map<std::string, std::function<void(Fault&, const json&)>, std::less<>>;

const Fields& fields() {
    static const Fields all = {
        {"peer", [](Fault& f, const json& v) { f.peer = v.get<std::string>(); }},
        {"member", [](Fault& f, const json& v) { f.member = v.get<std::string>(); }},
        {"path", [](Fault& f, const json& v) { f.path = v.get<std::string>(); }},
        {"argument", [](Fault& f, const json& v) { f.argument = v.get<std::string>(); }},
        {"nth", [](Fault& f, const json& v) { f.nth = v.get<unsigned>(); }},
        {"kind", [](Fault& f, const json& v) { f.kind = kindOf(v); }},
        {"error_name", [](Fault& f, const json& v) { f.errorName = v.get<std::string>(); }},
        {"error_text", [](Fault& f, const json& v) { f.errorText = v.get<std::string>(); }},
        {"delay", [](Fault& f, const json& v) { f.delay = std::chrono::milliseconds(v.get<unsigned>()); }},
    };
    return all;
}

}  // namespace

Fault faultFromJson(std::string_view text) {
    Fault fault;
    try {
        const json object = json::parse(text);
        for (const auto& [key, value] : object.items()) {
            const auto field = fields().find(key);
            if (field == fields().end()) {
                throw std::runtime_error("unknown member \"" + key + "\"");
            }
            field->second(fault, value);
        }
    } catch (const std::exception& error) {
        throw std::runtime_error(std::string("fault: ") + error.what());
    }
    return fault;
}

std::string callsAsJson(const std::vector<Call>& calls) {
    json list = json::array();
    for (const Call& call : calls) {
        list.push_back({{"peer", call.peer},
                        {"path", call.path},
                        {"interface", call.interface},
                        {"member", call.member},
                        {"arguments", json::parse(call.arguments)}});
    }
    return list.dump();
}

}  // namespace kaz::sim
