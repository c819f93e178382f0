#include "simulator/bus/faults.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace kaz::sim {
namespace {

constexpr std::array<std::pair<FaultKind, std::string_view>, 9> names = {{
    {FaultKind::error, "error"},
    {FaultKind::noReply, "no-reply"},
    {FaultKind::delay, "delay"},
    {FaultKind::wrongType, "wrong-type"},
    {FaultKind::wrongNesting, "wrong-nesting"},
    {FaultKind::emptyValue, "empty-value"},
    {FaultKind::noBody, "no-body"},
    {FaultKind::vanished, "vanished"},
    {FaultKind::crash, "crash"},
}};

bool hasArgument(const Call& call, const std::string& text) {
    const auto arguments = nlohmann::json::parse(call.arguments);
    return std::any_of(arguments.begin(), arguments.end(), [&](const auto& a) { return a == text; });
}

bool matches(const Fault& fault, const Call& call) {
    const auto same = [](const std::string& wanted, const std::string& actual) {
        return wanted.empty() || wanted == actual;
    };
    return same(fault.peer, call.peer) && same(fault.member, call.member) && same(fault.path, call.path) &&
           (fault.argument.empty() || hasArgument(call, fault.argument));
}

}  // namespace

std::optional<FaultKind> faultKindFromText(std::string_view text) {
    const auto* const found =
        std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.second == text; });
    return found == names.end() ? std::nullopt : std::optional(found->first);
}

FaultId Faults::order(Fault fault) {
    const auto id = static_cast<FaultId>(faults_.size() + 1);
    faults_.emplace(id, Ordered{std::move(fault)});
    return id;
}

void Faults::clear() {
    for (auto& [id, ordered] : faults_) {
        ordered.active = false;
    }
}

unsigned Faults::timesFired(FaultId id) const {
    const auto found = faults_.find(id);
    return found == faults_.end() ? 0 : found->second.fired;
}

std::optional<Fault> Faults::strike(const Call& call) {
    for (auto& [id, ordered] : faults_) {
        if (!ordered.active || !matches(ordered.fault, call)) {
            continue;
        }
        ++ordered.matched;
        if (ordered.fault.nth == 0 || ordered.fault.nth == ordered.matched) {
            ++ordered.fired;
            return ordered.fault;
        }
    }
    return std::nullopt;
}

}  // namespace kaz::sim
