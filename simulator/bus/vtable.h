#pragma once

#include "simulator/bus/handles.h"
#include "simulator/bus/values.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace kaz::sim {

// A method or property throws this to reply with an error.
class BusError : public std::runtime_error {
  public:
    BusError(std::string name, const std::string& text) : std::runtime_error(text), name_(std::move(name)) {}

    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
};

template <typename... Arguments>
void reply(sd_bus_message* call, const char* types, Arguments... arguments) {
    checked(sd_bus_reply_method_return(call, types, arguments...), "reply");
}

inline Message newReply(sd_bus_message* call) {
    Message answer;
    checked(sd_bus_message_new_method_return(call, dbus::out(answer)), "new reply");
    return answer;
}

inline void send(const Message& message) {
    checked(sd_bus_send(nullptr, message.get(), nullptr), "send");
}

// Entries of an sd_bus_vtable. Each runs a lambda without captures, whose first parameter is the vtable's object. The
// types of the further parameters and of the result are those on the bus.
namespace vtable {

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

template <typename Lambda, typename Pointer = decltype(+Lambda())>
struct Entry;

template <typename Lambda, typename Result, typename Object, typename... Parameters>
struct Entry<Lambda, Result (*)(Object&, Parameters...)> {
    using Value = Result;
    static constexpr const char* arguments = signatureOf<std::decay_t<Parameters>...>.data();

    // Replies when the lambda has returned.
    static int call(sd_bus_message* call, void* object, sd_bus_error* error) noexcept {
        return guarded(error, [&] {
            const std::tuple<std::decay_t<Parameters>...> values{
                Wire<std::decay_t<Parameters>>::read(call)...};
            const auto run = [&](const auto&... each) {
                return Lambda()(*static_cast<Object*>(object), each...);
            };
            if constexpr (std::is_void_v<Result>) {
                std::apply(run, values);
                reply(call, "");
            } else {
                const Result result = std::apply(run, values);
                const Message answer = newReply(call);
                Wire<Result>::append(answer.get(), result);
                send(answer);
            }
        });
    }
    static int handle(sd_bus_message* call, void* object, sd_bus_error* error) noexcept {
        return guarded(error, [&] { Lambda()(*static_cast<Object*>(object), call); });
    }
    static int get(sd_bus*, const char*, const char*, const char*, sd_bus_message* message, void* object,
                   sd_bus_error* error) noexcept {
        return guarded(error,
                       [&] { Wire<Result>::append(message, Lambda()(*static_cast<Object*>(object))); });
    }
    static int set(sd_bus*, const char*, const char*, const char*, sd_bus_message* message, void* object,
                   sd_bus_error* error) noexcept {
        return guarded(error, [&] {
            Lambda()(*static_cast<Object*>(object), Wire<std::decay_t<Parameters>>::read(message)...);
        });
    }
};

template <typename Lambda>
constexpr sd_bus_vtable method(const char* name, Lambda) {
    using Call = Entry<Lambda>;
    if constexpr (std::is_void_v<typename Call::Value>) {
        return SD_BUS_METHOD(name, Call::arguments, "", &Call::call, SD_BUS_VTABLE_UNPRIVILEGED);
    } else {
        return SD_BUS_METHOD(name, Call::arguments, Wire<typename Call::Value>::signature, &Call::call,
                             SD_BUS_VTABLE_UNPRIVILEGED);
    }
}

// A method whose lambda reads the arguments itself and sends the reply: void(Object&, sd_bus_message* call).
template <typename Lambda>
constexpr sd_bus_vtable rawMethod(const char* name, const char* arguments, const char* result, Lambda) {
    return SD_BUS_METHOD(name, arguments, result, &Entry<Lambda>::handle, SD_BUS_VTABLE_UNPRIVILEGED);
}

template <auto Flags = SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE, typename Lambda>
constexpr sd_bus_vtable property(const char* name, Lambda) {
    using Get = Entry<Lambda>;
    return SD_BUS_PROPERTY(name, Wire<typename Get::Value>::signature, &Get::get, 0, Flags);
}

template <typename Getter, typename Setter>
constexpr sd_bus_vtable property(const char* name, Getter, Setter) {
    using Get = Entry<Getter>;
    return SD_BUS_WRITABLE_PROPERTY(name, Wire<typename Get::Value>::signature, &Get::get,
                                    &Entry<Setter>::set, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE);
}

}  // namespace vtable
}  // namespace kaz::sim
