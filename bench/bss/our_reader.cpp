#include "bench/bss/bss_reader.h"
#include "communicator/dbus_communicator.h"

#include <future>
#include <stdexcept>

namespace kaz::bench {
namespace {

class OurReader final : public BssReader {
  public:
    OurReader() {
        communicator_.networkdOnlineHandler = [](bool /*online*/) {};
        communicator_.supplicantPropertiesHandler = [](auto&& /*properties*/) {};
        communicator_.wifiServiceStatusChangeHandler = [this] { attached_.set_value(); };
        communicator_.startEventLoop();
        attached_.get_future().wait();
    }
    ~OurReader() override { communicator_.stopEventLoop(); }
    OurReader(const OurReader&) = delete;
    OurReader& operator=(const OurReader&) = delete;
    OurReader(OurReader&&) = delete;
    OurReader& operator=(OurReader&&) = delete;

    void onItsThread(const std::function<void()>& work) override {
        const auto task = std::make_shared<std::packaged_task<void()>>(work);
        communicator_.pushTaskAsync_([task] { (*task)(); });
        task->get_future().get();
    }

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        const std::vector<dbus::OPath> objects(paths.begin(), paths.end());
        std::vector<Bss> read = communicator_.radio().bssListSync(objects);
        if (read.size() != paths.size()) {
            throw std::runtime_error("the library left out access points");
        }
        return read;
    }

  private:
    std::promise<void> attached_;
    wifi::DbusCommunicator communicator_;
};

}  // namespace

std::unique_ptr<BssReader> makeOurReader() {
    return std::make_unique<OurReader>();
}

}  // namespace kaz::bench
