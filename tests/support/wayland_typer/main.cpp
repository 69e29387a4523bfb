#include <chrono>
#include <cstdio>
#include <string>

#include "quillback/insertion/wayland/WaylandInsertion.h"
#include "quillback/loop/EpollLoop.h"
#include "support/TextsOnInput.h"

using namespace voxtrel::quillback;

namespace {

/// Types each text that standard input brings; one that begins with the byte 1 is
/// copied. Prints what happened, with the milliseconds that it took.
class WaylandTyper {
 public:
  explicit WaylandTyper(EpollLoop& loop)
      : loop_(loop),
        wayland_(loop,
                 [](const std::string& text, const std::string& why) {
                   std::printf("refused %s: %s\n", why.c_str(), text.c_str());
                 }),
        texts_(loop, [this](const std::string& text) { insert(text); }) {
    std::printf("type %d copy %d\n", wayland_.canType() ? 1 : 0, wayland_.canCopy() ? 1 : 0);
    std::fflush(stdout);
  }

 private:
  void insert(const std::string& text) {
    if (text.starts_with('\x01')) {
      std::printf("copied %d\n", wayland_.copy(text.substr(1)) ? 1 : 0);
      std::fflush(stdout);
      return;
    }
    if (!wayland_.canType()) {
      std::puts("cannot type");
      std::fflush(stdout);
      return;
    }
    const auto begun = loop_.now();
    wayland_.type(text, [this, begun] {
      const std::chrono::duration<double, std::milli> took = loop_.now() - begun;
      std::printf("typed %.1f\n", took.count());
      std::fflush(stdout);
    });
  }

  EpollLoop& loop_;
  WaylandInsertion wayland_;
  TextsOnInput texts_;
};

}  // namespace

int main() {
  EpollLoop loop;
  const WaylandTyper typer(loop);
  loop.run();
  return 0;
}
