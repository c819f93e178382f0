#include "inspection/bus_queries.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <utility>

#include "base/errno_text.h"

namespace kaz::inspection {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    for (const std::string_view each : names) {
        if (name == each) {
            return true;
        }
    }
    return false;
}

Answer answerOf(sd_bus_message* reply) {
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    if (error == nullptr) {
        return {reply, false, {}};
    }
    const std::string_view name = error->name;
    Answer answer;
    answer.unknown.why = error->message != nullptr ? error->message : error->name;
    answer.isAbsent = isOneOf(
        name, {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER, SD_BUS_ERROR_UNKNOWN_OBJECT});
    answer.unknown.obstacle = Obstacle::failed;
    if (isOneOf(name, {SD_BUS_ERROR_ACCESS_DENIED, SD_BUS_ERROR_AUTH_FAILED})) {
        answer.unknown.obstacle = Obstacle::notAllowed;
    } else if (isOneOf(name, {SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT})) {
        answer.unknown.obstacle = Obstacle::noAnswer;
    }
    return answer;
}

// Returns a reader of a basic type.
template <typename Raw, typename Value>
Reader basic(char type, Value& value) {
    return [type, &value](sd_bus_message* message) {
        Raw raw{};
        if (sd_bus_message_read_basic(message, type, &raw) <= 0) {
            return false;
        }
        value = static_cast<Value>(raw);
        return true;
    };
}

}  // namespace

Reader into(std::string& text) {
    return basic<const char*>('s', text);
}

Reader into(bool& flag) {
    return basic<int>('b', flag);
}

Reader into(std::uint32_t& number) {
    return basic<std::uint32_t>('u', number);
}

Reader into(std::int32_t& number) {
    return basic<std::int32_t>('i', number);
}

Reader into(std::vector<std::string>& paths) {
    return [&paths](sd_bus_message* message) {
        if (sd_bus_message_enter_container(message, 'a', "o") <= 0) {
            return false;
        }
        std::string path;
        const Reader next = basic<const char*>('o', path);
        while (next(message)) {
            paths.push_back(path);
        }
        return sd_bus_message_exit_container(message) >= 0;
    };
}

bool readProperties(sd_bus_message* message, const Readers& readers) {
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) {
        return false;
    }
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        const char* type = nullptr;
        if (sd_bus_message_read_basic(message, 's', &name) < 0 ||
            sd_bus_message_peek_type(message, nullptr, &type) < 0) {
            return false;
        }
        const auto reader = readers.find(name);
        if (reader == readers.end()) {
            sd_bus_message_skip(message, "v");
        } else if (sd_bus_message_enter_container(message, 'v', type) < 0 ||
                   (!reader->second(message) && sd_bus_message_skip(message, type) < 0) ||
                   sd_bus_message_exit_container(message) < 0) {
            return false;
        }
        if (sd_bus_message_exit_container(message) < 0) {
            return false;
        }
    }
    return sd_bus_message_exit_container(message) >= 0;
}

BusQueries::BusQueries(std::chrono::milliseconds limit) : end_(steady_clock::now() + limit) {
    const int result = sd_bus_open_system(dbus::out(bus_));
    if (result < 0) {
        trouble_ = errnoText(result);
    }
}

BusQueries::~BusQueries() = default;

void BusQueries::ask(const std::string& service, const std::string& path, const std::string& interface,
                     const std::string& member, const Reader& appendArguments, Handler handler) {
    Question& question = questions_.emplace_back();
    question.handler = std::move(handler);
    dbus::MessagePtr call;
    int result = bus_ == nullptr
                     ? -ENOTCONN
                     : sd_bus_message_new_method_call(bus_.get(), dbus::out(call), service.c_str(),
                                                      path.c_str(), interface.c_str(), member.c_str());
    if (result >= 0 && (sd_bus_message_set_auto_start(call.get(), 0) < 0 || !appendArguments(call.get()))) {
        result = -EINVAL;
    }
    if (result >= 0) {
        const auto left = std::max(duration_cast<microseconds>(end_ - steady_clock::now()), microseconds(1));
        result = sd_bus_call_async(bus_.get(), dbus::out(question.slot), call.get(), &onReply, &question,
                                   static_cast<std::uint64_t>(left.count()));
    }
    if (result < 0) {
        question.answered = true;
        question.handler({nullptr, false, {Obstacle::failed, errnoText(result)}});
    }
}

void BusQueries::askProperties(const std::string& service, const std::string& path,
                               const std::string& interface, Handler handler) {
    const auto append = [&interface](sd_bus_message* message) {
        return sd_bus_message_append_basic(message, 's', interface.c_str()) >= 0;
    };
    ask(service, path, "org.freedesktop.DBus.Properties", "GetAll", append, std::move(handler));
}

int BusQueries::onReply(sd_bus_message* reply, void* question, sd_bus_error* /*error*/) noexcept {
    Question& mine = *static_cast<Question*>(question);
    mine.answered = true;
    mine.handler(answerOf(reply));
    return 1;
}

bool BusQueries::isAnswered() const {
    return std::all_of(questions_.begin(), questions_.end(),
                       [](const Question& each) { return each.answered; });
}

void BusQueries::run() {
    while (!isAnswered() && bus_ != nullptr) {
        const int processed = sd_bus_process(bus_.get(), nullptr);
        if (processed < 0) {
            trouble_ = errnoText(processed);
            break;
        }
        const auto left = duration_cast<microseconds>(end_ - steady_clock::now());
        if (left.count() <= 0) {
            break;
        }
        if (processed == 0) {
            sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count()));
        }
    }
    endUnanswered();
}

void BusQueries::endUnanswered() {
    // A handler may ask more, and the list grows while it is read.
    for (Question& each : questions_) {
        if (!std::exchange(each.answered, true)) {
            each.slot.reset();
            each.handler({nullptr, false, {Obstacle::noAnswer, "no answer"}});
        }
    }
}

std::string BusQueries::ownName() const {
    const char* name = nullptr;
    return bus_ != nullptr && sd_bus_get_unique_name(bus_.get(), &name) >= 0 ? name : "";
}

}  // namespace kaz::inspection
