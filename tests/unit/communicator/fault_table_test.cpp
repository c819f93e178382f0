// The table of faults contains each call.
#include "communicator/bus_names.h"
#include "unit/communicator/fault_operations.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

namespace kaz::wifi {
namespace {

namespace fs = std::filesystem;
using Kind = FaultOperation::Kind;

// "call Scan", "get Networks", "set Enabled", "all INTERFACE".
using Names = std::set<std::string>;

Names callsOfTheTable() {
    static const std::map<Kind, std::string> kinds{
        {Kind::method, "call "}, {Kind::get, "get "}, {Kind::set, "set "}};
    Names names;
    for (const FaultOperation& operation : faultOperations()) {
        const auto kind = kinds.find(operation.kind);
        names.insert(kind == kinds.end() ? "all " + operation.interface : kind->second + operation.member);
    }
    return names;
}

std::string interfaceOf(const std::string& arguments) {
    static const std::map<std::string, std::string> interfaces{
        {"bus::supplicant::interfaceInterface", bus::supplicant::interfaceInterface},
        {"bus::supplicant::bssInterface", bus::supplicant::bssInterface},
        {"bus::networkd::managerInterface", bus::networkd::managerInterface},
    };
    for (const auto& [constant, interface] : interfaces) {
        if (arguments.find(constant) != std::string::npos) {
            return interface;
        }
    }
    return arguments;
}

// Finds each operation of a remote object: its name, its first argument and the rest. A choice of two members counts as a
// call of each.
void addCalls(const std::string& source, Names& names) {
    static const std::regex operation(R"(\.(call|callWithSecrets|get|set)\(([^,;)]+)([^;]*))");
    static const std::regex literal(R"re("([^"]*)")re");
    for (std::sregex_iterator found(source.begin(), source.end(), operation), end; found != end; ++found) {
        const std::string kind = (*found)[1].str().substr(0, 4);
        const std::string member = (*found)[2].str();
        std::sregex_iterator name(member.begin(), member.end(), literal);
        EXPECT_NE(name, end) << "cannot tell what is called: " << found->str();
        for (; name != end; ++name) {
            const bool all = kind == "call" && (*name)[1] == "GetAll";
            names.insert(all ? "all " + interfaceOf((*found)[3]) : kind + ' ' + (*name)[1].str());
        }
    }
}

// Only this layer makes calls.
Names callsOfTheSources() {
    Names names;
    for (const fs::directory_entry& entry : fs::directory_iterator(KAZ_COMMUNICATOR_SOURCES)) {
        std::ifstream file(entry.path());
        const std::string source{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(source.find("makeDbus"), std::string::npos) << entry.path() << " calls in a way of its own";
        addCalls(source, names);
    }
    return names;
}

TEST(FaultTable, TableListsEachCallOfTheSources) {
    EXPECT_THAT(callsOfTheTable(), testing::ContainerEq(callsOfTheSources()));
}

}  // namespace
}  // namespace kaz::wifi
