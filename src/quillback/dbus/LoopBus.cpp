#include "quillback/dbus/LoopBus.h"

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {
namespace {

using std::chrono::milliseconds;

/// How often a full socket is tried again; the loop only watches for input.
constexpr milliseconds kWriteRetry{20};

/// Thread: the loop's.  Borrows: Loop (must outlive this).
class LoopWait final : public BusWait {
 public:
  explicit LoopWait(Loop& loop) : loop_(loop) {}

  void start(int descriptor, std::function<void()> onReady) override {
    onReady_ = std::move(onReady);
    watch_ = loop_.watch(descriptor, onReady_);
  }
  void waitFor(bool output, std::optional<milliseconds> time) override {
    if (output) time = std::min(time.value_or(kWriteRetry), kWriteRetry);
    timer_ = time ? loop_.after(*time, onReady_) : nullptr;
  }
  void stop() override {
    watch_.reset();
    timer_.reset();
  }

 private:
  Loop& loop_;
  std::function<void()> onReady_;
  std::unique_ptr<Loop::Watch> watch_;
  std::unique_ptr<Loop::Timer> timer_;
};

}  // namespace

std::unique_ptr<Bus> openBus(Bus::Kind kind, Loop& loop, std::function<void()> onClosed) {
  return Bus::open(kind, std::make_unique<LoopWait>(loop), std::move(onClosed));
}

}  // namespace voxtrel::quillback
