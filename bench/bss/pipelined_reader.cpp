#include "bench/bss/bss_reader.h"
#include "bench/codec/hand_written_codec.h"
#include "bench/stand_in/stand_in_process.h"
#include "communicator/bss_rules.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace kaz::bench {
namespace {

// The system bus returns an error for more than 128 calls without a reply per client.
constexpr std::size_t callsInFlight = 64;

class PipelinedReader final : public BssReader {
  public:
    explicit PipelinedReader(const std::string& busAddress) : bus_(connectTo(busAddress)) {}

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        read_.clear();
        read_.reserve(paths.size());
        std::size_t sent = 0;
        while (read_.size() < paths.size()) {
            for (; sent < std::min(paths.size(), read_.size() + callsInFlight); ++sent) {
                send(paths[sent].c_str());
            }
            processOne();
        }
        return read_;
    }

  private:
    static void require(int result) {
        if (result < 0) {
            throw std::runtime_error("the pipelined reader failed");
        }
    }

    void send(const char* path) {
        require(sd_bus_call_method_async(bus_.get(), nullptr, supplicantService, path, propertiesInterface,
                                         "GetAll", &PipelinedReader::onReply, this, "s", bssInterface));
    }

    void processOne() {
        const int processed = sd_bus_process(bus_.get(), nullptr);
        require(processed);
        if (processed == 0) {
            require(sd_bus_wait(bus_.get(), UINT64_MAX));
        }
    }

    // The bus keeps the order of calls and replies.
    static int onReply(sd_bus_message* reply, void* reader, sd_bus_error* /*error*/) {
        wifi::BSSData data;
        const int r = readBssByHand(reply, data);
        if (r >= 0) {
            static_cast<PipelinedReader*>(reader)->read_.push_back(wifi::propertiesOfBss(data));
        }
        return r;
    }

    OpenBus bus_;
    std::vector<Bss> read_;
};

}  // namespace

std::unique_ptr<BssReader> makePipelinedReader(const std::string& busAddress) {
    return std::make_unique<PipelinedReader>(busAddress);
}

}  // namespace kaz::bench
