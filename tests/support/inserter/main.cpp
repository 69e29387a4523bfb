#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>

#include "common/base/HomeDirectory.h"
#include "common/settings/ConfigManager.h"
#include "quillback/insertion/TextSinks.h"
#include "quillback/loop/EpollLoop.h"
#include "quillback/loop/LineOutput.h"

using namespace voxtrel;
using namespace voxtrel::quillback;

namespace {

struct OpenScreen final : ScreenLock {
  bool isLocked() override { return false; }
};

/// Inserts each text that standard input brings, up to its zero byte, as the engine does under Wayland.
/// Prints what the engine would print, and the end of each insertion.
class TextsToInsert {
 public:
  explicit TextsToInsert(EpollLoop& loop)
      : loop_(loop),
        sink_(sinks_.make(readEngineSettings(ConfigManager(homeDirectory()).configPath()).settings,
                          SessionKind::wayland)),
        watch_(loop.watch(STDIN_FILENO, [this] { read(); })) {
    output_.print("started");
  }

 private:
  void read() {
    std::array<char, 65536> bytes{};
    const ssize_t size = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (size <= 0) return loop_.stop();
    input_.append(bytes.data(), static_cast<std::size_t>(size));
    for (std::size_t end = 0; (end = input_.find('\0')) != std::string::npos;) {
      sink_->insert(input_.substr(0, end), [this] { output_.print("inserted"); });
      input_.erase(0, end + 1);
    }
  }

  EpollLoop& loop_;
  LineOutput output_{STDOUT_FILENO};
  OwnKeys ownKeys_{loop_};
  OpenScreen lock_;
  TextSinks sinks_{loop_, ownKeys_, lock_, output_};
  std::unique_ptr<TextSink> sink_;
  std::string input_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace

int main() {
  // A window may stop reading.
  std::signal(SIGPIPE, SIG_IGN);
  EpollLoop loop;
  const TextsToInsert texts(loop);
  loop.run();
  return 0;
}
