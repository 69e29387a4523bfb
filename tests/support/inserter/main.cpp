#include <csignal>
#include <cstdio>
#include <string>

#include "common/base/HomeDirectory.h"
#include "common/settings/ConfigManager.h"
#include "quillback/insertion/TextSinks.h"
#include "quillback/loop/EpollLoop.h"
#include "quillback/loop/LineOutput.h"
#include "support/TextsOnInput.h"

using namespace voxtrel;
using namespace voxtrel::quillback;

namespace {

struct OpenScreen final : ScreenLock {
  bool isLocked() override { return false; }
};

/// Inserts each text that standard input brings as the engine does under Wayland.
/// Prints what the engine would print, and the end of each insertion.
class Inserter {
 public:
  explicit Inserter(EpollLoop& loop)
      : loop_(loop),
        sink_(sinks_.make(readEngineSettings(ConfigManager(homeDirectory()).configPath()).settings,
                          SessionKind::wayland)),
        texts_(loop, [this](const std::string& text) {
          sink_->insert(text, [this] { output_.print("inserted"); });
        }) {
    output_.print("started");
  }

 private:
  EpollLoop& loop_;
  LineOutput output_{STDOUT_FILENO};
  OwnKeys ownKeys_{loop_};
  OpenScreen lock_;
  TextSinks sinks_{loop_, ownKeys_, lock_, output_};
  std::unique_ptr<TextSink> sink_;
  TextsOnInput texts_;
};

}  // namespace

int main() {
  // A window may stop reading.
  std::signal(SIGPIPE, SIG_IGN);
  EpollLoop loop;
  const Inserter inserter(loop);
  loop.run();
  return 0;
}
