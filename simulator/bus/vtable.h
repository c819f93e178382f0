#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "simulator/bus/handles.h"

namespace kaz::sim {

// A method or property throws this to reply with an error.
class BusError : public std::runtime_error {
  public:
    BusError(std::string name, const std::string& text) : std::runtime_error(text), name_(std::move(name)) {}

    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
};

// Entries of an sd_bus_vtable that call a member function of the vtable's object. Methods are
// void(sd_bus_message* call) and send the reply; getters are void(sd_bus_message* out) const and append the
// value; setters are void(sd_bus_message* in).
namespace vtable {

// A property that signals its changes.
inline constexpr auto emits = SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE;

template <typename Function>
int guarded(sd_bus_error* error, Function&& function) noexcept {
    try {
        std::forward<Function>(function)();
        return 1;
    } catch (const BusError& refused) {
        return sd_bus_error_set(error, refused.name().c_str(), refused.what());
    } catch (const std::exception& failed) {
        return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failed.what());
    }
}

template <auto Member>
struct Entry;

template <typename T, void (T::*Member)(sd_bus_message*)>
struct Entry<Member> {
    static int method(sd_bus_message* call, void* object, sd_bus_error* error) noexcept {
        return guarded(error, [&] { (static_cast<T*>(object)->*Member)(call); });
    }
    static int set(sd_bus*, const char*, const char*, const char*, sd_bus_message* value, void* object,
                   sd_bus_error* error) noexcept {
        return guarded(error, [&] { (static_cast<T*>(object)->*Member)(value); });
    }
};

template <typename T, void (T::*Member)(sd_bus_message*) const>
struct Entry<Member> {
    static int get(sd_bus*, const char*, const char*, const char*, sd_bus_message* out, void* object,
                   sd_bus_error* error) noexcept {
        return guarded(error, [&] { (static_cast<const T*>(object)->*Member)(out); });
    }
};

template <auto Member>
constexpr sd_bus_message_handler_t method = &Entry<Member>::method;

template <auto Member>
constexpr sd_bus_property_get_t get = &Entry<Member>::get;

template <auto Member>
constexpr sd_bus_property_set_t set = &Entry<Member>::set;

}  // namespace vtable

template <typename... Arguments>
void reply(sd_bus_message* call, const char* types, Arguments... arguments) {
    checked(sd_bus_reply_method_return(call, types, arguments...), "reply");
}

}  // namespace kaz::sim
