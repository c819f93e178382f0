#include "bench/bss/bss_reader.h"
#include "bench/codec/hand_written_codec.h"
#include "bench/stand_in/stand_in_process.h"
#include "communicator/bss_rules.h"

#include <stdexcept>

namespace kaz::bench {
namespace {

class HandWrittenReader final : public BssReader {
  public:
    explicit HandWrittenReader(const std::string& busAddress) : bus_(connectTo(busAddress)) {}

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        std::vector<Bss> read;
        read.reserve(paths.size());
        for (const std::string& path : paths) {
            read.push_back(readOne(path.c_str()));
        }
        return read;
    }

  private:
    Bss readOne(const char* path) {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* reply = nullptr;
        wifi::BSSData data;
        int r = sd_bus_call_method(bus_.get(), supplicantService, path, propertiesInterface, "GetAll", &error,
                                   &reply, "s", bssInterface);
        r = r < 0 ? r : readBssByHand(reply, data);
        sd_bus_message_unref(reply);
        sd_bus_error_free(&error);
        if (r < 0) {
            throw std::runtime_error("the hand-written reader failed");
        }
        return wifi::propertiesOfBss(data);
    }

    OpenBus bus_;
};

}  // namespace

std::unique_ptr<BssReader> makeHandWrittenReader(const std::string& busAddress) {
    return std::make_unique<HandWrittenReader>(busAddress);
}

}  // namespace kaz::bench
